# Options that every target of the project is built with.

# A fused multiply-add rounds once instead of twice: the same settings must give the same bytes on every machine.
add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-ffp-contract=off>)

if(TARNO2_SANITIZE)
    add_compile_options(-fsanitize=${TARNO2_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TARNO2_SANITIZE})
endif()

# For what need not be fast, because it runs once or in tests alone: optimising takes longer than is ever won by it.
set(TARNO2_UNHURRIED -O1)
if(TARNO2_SANITIZE)
    set(TARNO2_UNHURRIED -O0)
endif()

# A fault in the reading of a hostile file ends the program where it happens, and nothing of it can be overwritten. For
# optimised builds; the sanitizers find the same and more. scripts/check-hardening.sh looks at what was built.
if(NOT TARNO2_SANITIZE)
    set(hardening -D_GLIBCXX_ASSERTIONS)
    if(NOT WIN32)
        include(CheckCXXSourceCompiles)
        set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
        check_cxx_source_compiles("#include <cstdlib>
            static_assert(__USE_FORTIFY_LEVEL == 3);
            int main() {}" TARNO2_FORTIFY_3)
        unset(CMAKE_REQUIRED_FLAGS)
        list(APPEND hardening -fstack-protector-strong -U_FORTIFY_SOURCE
             -D_FORTIFY_SOURCE=$<IF:$<BOOL:${TARNO2_FORTIFY_3}>,3,2>)
        add_link_options(-Wl,-z,relro -Wl,-z,now)
    endif()
    add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:${hardening}>")
endif()

if(WIN32)
    # Paths and texts are single-byte (the system's code page), so the A functions are meant throughout.
    add_compile_definitions(WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
    add_link_options(-static -static-libgcc -static-libstdc++)
endif()

# Where warnings are errors they are GCC's, natively and for Windows; clang, which serves the fuzz programs, warns of
# other things.
function(tarno2_warnings target)
    # -Wrestrict of GCC 12 misfires on "literal" + std::string.
    set(warnings -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
        $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:${TARNO2_WERROR}>>:-Werror>)
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${warnings}>")
endfunction()
