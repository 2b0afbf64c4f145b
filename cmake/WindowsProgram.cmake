# What programs and libraries need on Windows: a version, and beside a program with windows those of Qt.

# Gives a program or library its version; a program also its icon and how the system is to treat it.
function(tarno2_windows_resources target RESOURCE_DESCRIPTION)
    if(NOT WIN32)
        return()
    endif()
    set(RESOURCE_NAME ${target})
    set(RESOURCE_FOLDER ${PROJECT_SOURCE_DIR}/packaging/windows)
    string(REPLACE "." "," VERSION_COMMAS ${PROJECT_VERSION})
    get_target_property(kind ${target} TYPE)
    if(kind STREQUAL EXECUTABLE)
        set(RESOURCE_SUFFIX .exe)
        set(RESOURCE_TYPE VFT_APP)
        set(manifest ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
        configure_file(${RESOURCE_FOLDER}/program.manifest.in ${manifest} @ONLY)
        set(RESOURCE_ICON "1 ICON \"${RESOURCE_FOLDER}/tarno2.ico\"")
        set(RESOURCE_MANIFEST "1 24 \"${manifest}\"")
    else()
        set(RESOURCE_SUFFIX ${CMAKE_SHARED_MODULE_SUFFIX})
        set(RESOURCE_TYPE VFT_DLL)
    endif()
    configure_file(${RESOURCE_FOLDER}/program.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
endfunction()

# Whether Qt comes as libraries that have to lie beside a program. One made of static libraries leaves nothing to copy.
function(tarno2_qt_is_copied result)
    set(${result} OFF PARENT_SCOPE)
    if(WIN32 AND TARGET Qt6::Core)
        get_target_property(kind Qt6::Core TYPE)
        if(kind STREQUAL SHARED_LIBRARY)
            set(${result} ON PARENT_SCOPE)
        endif()
    endif()
endfunction()

# The compiler's runtime, as Qt's libraries load it; our own programs carry theirs inside.
function(tarno2_compiler_runtime result)
    set(files)
    foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                        OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        if(IS_ABSOLUTE "${file}" AND EXISTS "${file}")
            list(APPEND files ${file})
        endif()
    endforeach()
    set(${result} ${files} PARENT_SCOPE)
endfunction()

# Qt's own texts in Russian: of this Qt, or, where it has none, those of the host's, which has to be as old.
function(tarno2_find_qt_texts)
    find_file(QTBASE_RUSSIAN qtbase_ru.qm PATHS ${QT_MINGW}/translations ${QT_MINGW}/share/qt6/translations
              ${QT6_INSTALL_PREFIX}/translations /usr/share/qt6/translations NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    if(NOT QTBASE_RUSSIAN)
        message(STATUS "No qtbase_ru.qm: Qt's own texts stay English")
    endif()
endfunction()

# Plugins of Qt that a program with windows loads; the tests take the one without a screen as well.
set(TARNO2_QT_PLUGINS platforms/QWindowsIntegration styles/QWindowsVistaStyle styles/QModernWindowsStyle)

# Puts the libraries that a program with windows loads, and Qt's plugins, beside it in the build tree.
function(tarno2_stage_qt target)
    tarno2_qt_is_copied(copied)
    if(NOT copied)
        return()
    endif()
    tarno2_compiler_runtime(runtime)
    set(extras)
    foreach(plugin ${TARNO2_QT_PLUGINS} platforms/QOffscreenIntegration)
        get_filename_component(folder ${plugin} DIRECTORY)
        get_filename_component(name ${plugin} NAME)
        if(TARGET Qt6::${name}Plugin)
            list(APPEND extras
                 COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:${target}>/${folder}
                 COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:Qt6::${name}Plugin>
                         $<TARGET_FILE_DIR:${target}>/${folder})
        endif()
    endforeach()
    tarno2_find_qt_texts()
    if(QTBASE_RUSSIAN)
        list(APPEND extras
             COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:${target}>/translations
             COMMAND ${CMAKE_COMMAND} -E copy_if_different ${QTBASE_RUSSIAN}
                     $<TARGET_FILE_DIR:${target}>/translations)
    endif()
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_RUNTIME_DLLS:${target}> ${runtime}
                $<TARGET_FILE_DIR:${target}>
        ${extras} COMMAND_EXPAND_LISTS VERBATIM)
endfunction()

# Installs what the program loads of Qt.
function(tarno2_install_qt target)
    tarno2_qt_is_copied(copied)
    if(NOT copied)
        return()
    endif()
    tarno2_compiler_runtime(runtime)
    install(FILES $<TARGET_RUNTIME_DLLS:${target}> ${runtime} DESTINATION ${TARNO2_PROGRAM_FOLDER} COMPONENT runtime)
    foreach(plugin ${TARNO2_QT_PLUGINS})
        get_filename_component(folder ${plugin} DIRECTORY)
        get_filename_component(name ${plugin} NAME)
        if(TARGET Qt6::${name}Plugin)
            install(FILES $<TARGET_FILE:Qt6::${name}Plugin> DESTINATION ${TARNO2_PROGRAM_FOLDER}/${folder}
                    COMPONENT runtime)
        endif()
    endforeach()
    tarno2_find_qt_texts()
    if(QTBASE_RUSSIAN)
        install(FILES ${QTBASE_RUSSIAN} DESTINATION ${TARNO2_PROGRAM_FOLDER}/translations COMPONENT runtime)
    endif()
endfunction()
