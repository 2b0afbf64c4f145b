# One static library a folder: tarno2_folder(NAME platform SOURCES ... LINKS ...). Includes are written from src/,
# so that every include line names the folder it reaches into.
function(tarno2_folder)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;LINKS" ${ARGN})
    add_library(tarno2_${ARG_NAME} STATIC ${ARG_SOURCES})
    target_include_directories(tarno2_${ARG_NAME} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_BINARY_DIR}/generated)
    target_link_libraries(tarno2_${ARG_NAME} PUBLIC ${ARG_LINKS})
    tarno2_warnings(tarno2_${ARG_NAME})
endfunction()

# The registry text by which the programs of each folder find a library in bin, and that which is installed; TEMPLATE
# names the library by LIBRARY_PATH.
function(tarno2_registry_text name template component)
    foreach(folder ${TARNO2_BIN} ${TARNO2_TEST_BIN} ${TARNO2_BENCH_BIN})
        file(RELATIVE_PATH LIBRARY_PATH ${folder}/registry.d ${TARNO2_BIN}/${name}${CMAKE_SHARED_MODULE_SUFFIX})
        configure_file(${template} ${folder}/registry.d/${name}.reg @ONLY)
    endforeach()
    set(LIBRARY_PATH ../${name}${CMAKE_SHARED_MODULE_SUFFIX})
    if(NOT TARNO2_REGISTRY_FOLDER STREQUAL "${TARNO2_PROGRAM_FOLDER}/registry.d")
        set(LIBRARY_PATH ${CMAKE_INSTALL_PREFIX}/${TARNO2_PROGRAM_FOLDER}/${name}${CMAKE_SHARED_MODULE_SUFFIX})
    endif()
    configure_file(${template} ${PROJECT_BINARY_DIR}/registry.d/${name}.reg @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/registry.d/${name}.reg DESTINATION ${TARNO2_REGISTRY_FOLDER}
            COMPONENT ${component})
endfunction()

# A board driver: a shared library beside the programs, and the registry text that lists it under its display name.
function(tarno2_driver)
    cmake_parse_arguments(ARG "" "NAME;DISPLAY" "SOURCES;LINKS" ${ARGN})
    add_library(${ARG_NAME} MODULE ${ARG_SOURCES})
    set_target_properties(${ARG_NAME} PROPERTIES PREFIX "")
    target_link_libraries(${ARG_NAME} PRIVATE tarno2_sdk ${ARG_LINKS})
    tarno2_warnings(${ARG_NAME})
    tarno2_windows_resources(${ARG_NAME} "Driver of Tarno2: ${ARG_DISPLAY}")
    set(DRIVER_DISPLAY ${ARG_DISPLAY})
    tarno2_registry_text(${ARG_NAME} ${PROJECT_SOURCE_DIR}/src/drivers/driver.reg.in drivers)
    install(TARGETS ${ARG_NAME} LIBRARY DESTINATION ${TARNO2_PROGRAM_FOLDER} COMPONENT drivers)
endfunction()

# A program for users: what it is, is what Windows shows of it.
function(tarno2_program name description)
    tarno2_warnings(${name})
    tarno2_windows_resources(${name} ${description})
    install(TARGETS ${name} RUNTIME DESTINATION ${TARNO2_PROGRAM_FOLDER} COMPONENT runtime)
    tarno2_install_link(${name})
endfunction()

# A program that measures or tries the recorder on any machine; FOLDER is where it is built.
function(tarno2_development_program name folder)
    tarno2_warnings(${name})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${folder})
    install(TARGETS ${name} RUNTIME DESTINATION ${TARNO2_PROGRAM_FOLDER} COMPONENT development EXCLUDE_FROM_ALL)
endfunction()

# One test program a folder, one ctest entry a program. BESIDE_OTHERS: other tests may use the processor meanwhile.
function(tarno2_test)
    cmake_parse_arguments(ARG "BESIDE_OTHERS" "NAME" "SOURCES;LINKS" ${ARGN})
    add_executable(test_${ARG_NAME} ${ARG_SOURCES})
    set_target_properties(test_${ARG_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${TARNO2_TEST_BIN})
    target_link_libraries(test_${ARG_NAME} PRIVATE ${ARG_LINKS} tarno2_test_support GTest::gmock GTest::gtest_main)
    tarno2_warnings(test_${ARG_NAME})
    add_test(NAME ${ARG_NAME} COMMAND test_${ARG_NAME} WORKING_DIRECTORY ${TARNO2_TEST_BIN})
    if(NOT ARG_BESIDE_OTHERS)
        set_tests_properties(${ARG_NAME} PROPERTIES RUN_SERIAL ON)
    endif()
endfunction()

# Sets the environment of a test. Wine keeps the host's QT_ variables to itself and takes them with a prefix.
function(tarno2_test_environment name)
    foreach(setting LC_ALL=C.UTF-8 ${ARGN})
        set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT ${setting})
        if(CMAKE_CROSSCOMPILING AND setting MATCHES "^QT_")
            set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT WINE${setting})
        endif()
    endforeach()
endfunction()

# The same for windows: the program brings a main of its own, and runs without a display.
function(tarno2_gui_test)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;LINKS" ${ARGN})
    add_executable(test_${ARG_NAME} ${ARG_SOURCES})
    set_target_properties(test_${ARG_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${TARNO2_TEST_BIN} AUTOMOC ON)
    target_link_libraries(test_${ARG_NAME} PRIVATE ${ARG_LINKS} Qt6::Widgets Qt6::Test tarno2_test_support
                          GTest::gmock GTest::gtest)
    tarno2_warnings(test_${ARG_NAME})
    tarno2_stage_qt(test_${ARG_NAME})
    add_test(NAME ${ARG_NAME} COMMAND test_${ARG_NAME} WORKING_DIRECTORY ${TARNO2_TEST_BIN})
    set_tests_properties(${ARG_NAME} PROPERTIES RUN_SERIAL ON)
    tarno2_test_environment(${ARG_NAME} QT_QPA_PLATFORM=offscreen)
    if(CMAKE_CROSSCOMPILING)
        # A fresh Wine has no fonts: what fits in a window is measured with those of the host.
        tarno2_test_environment(${ARG_NAME} QT_QPA_FONTDIR=Z:/usr/share/fonts/truetype/dejavu)
    endif()
endfunction()

# Tests that can't be built here are counted and named as skipped: OUTPUT gets a source that has all tests of SOURCES,
# each of which only says why.
function(tarno2_skipped_tests)
    cmake_parse_arguments(ARG "" "OUTPUT;REASON" "SOURCES" ${ARGN})
    set(text "#include <gtest/gtest.h>\n")
    set(count 0)
    foreach(source ${ARG_SOURCES})
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
        file(STRINGS ${source} lines REGEX "^TEST(_F)?\\([A-Za-z0-9_]+, [A-Za-z0-9_]+\\)")
        foreach(line ${lines})
            string(REGEX REPLACE "^TEST(_F)?(\\([A-Za-z0-9_]+, [A-Za-z0-9_]+\\)).*" "\\2" name "${line}")
            string(APPEND text "TEST${name} { GTEST_SKIP() << \"${ARG_REASON}\"; }\n")
        endforeach()
    endforeach()
    file(CONFIGURE OUTPUT ${ARG_OUTPUT} CONTENT "${text}" @ONLY)
endfunction()
