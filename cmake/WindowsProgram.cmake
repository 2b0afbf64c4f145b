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

# Puts the libraries that a program with windows loads, and Qt's plugins, beside it. A Qt made of static libraries has none.
function(tarno2_stage_qt target)
    get_target_property(kind Qt6::Core TYPE)
    if(NOT WIN32 OR NOT kind STREQUAL SHARED_LIBRARY)
        return()
    endif()
    # The compiler's runtime, as Qt's libraries load it; our own programs carry theirs inside.
    set(runtime)
    foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                        OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        if(IS_ABSOLUTE "${file}" AND EXISTS "${file}")
            list(APPEND runtime ${file})
        endif()
    endforeach()
    set(plugins)
    foreach(plugin platforms/QWindowsIntegration platforms/QOffscreenIntegration styles/QWindowsVistaStyle
                   styles/QModernWindowsStyle)
        get_filename_component(folder ${plugin} DIRECTORY)
        get_filename_component(name ${plugin} NAME)
        if(TARGET Qt6::${name}Plugin)
            list(APPEND plugins
                 COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:${target}>/${folder}
                 COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:Qt6::${name}Plugin>
                         $<TARGET_FILE_DIR:${target}>/${folder})
        endif()
    endforeach()
    # Qt's own texts in Russian: of this Qt, or, where it has none, those of the host's, which has to be as old.
    find_file(QTBASE_RUSSIAN qtbase_ru.qm PATHS ${QT_MINGW}/translations ${QT_MINGW}/share/qt6/translations
              ${QT6_INSTALL_PREFIX}/translations /usr/share/qt6/translations NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    if(QTBASE_RUSSIAN)
        list(APPEND plugins
             COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:${target}>/translations
             COMMAND ${CMAKE_COMMAND} -E copy_if_different ${QTBASE_RUSSIAN}
                     $<TARGET_FILE_DIR:${target}>/translations)
    else()
        message(STATUS "No qtbase_ru.qm: Qt's own texts stay English")
    endif()
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_RUNTIME_DLLS:${target}> ${runtime}
                $<TARGET_FILE_DIR:${target}>
        ${plugins} COMMAND_EXPAND_LISTS VERBATIM)
endfunction()
