# Copies sdk/ to FOLDER and builds the example there, knowing nothing of the project around it.
file(REMOVE_RECURSE ${FOLDER})
file(COPY ${SDK} DESTINATION ${FOLDER})
set(options -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER})
if(TOOLCHAIN)
    set(options -G ${GENERATOR} --toolchain ${TOOLCHAIN})
endif()
set(flags "-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror")
if(SANITIZE)
    string(APPEND flags " -fsanitize=${SANITIZE}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} ${options} -DCMAKE_CXX_FLAGS=${flags} -S ${FOLDER}/sdk/example
                        -B ${FOLDER}/build COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${FOLDER}/build COMMAND_ERROR_IS_FATAL ANY)
