# What `cmake --install BUILD --component NAME` installs:
#
#   runtime       the programs, the library that draws signals, documents
#   drivers       the drivers that come with the program
#   desktop       what desktops and shells know of the programs: menu, types of files, icons, completion; not on Windows
#   sdk           what a driver's author needs: headers, examples, find_package(Tarno2SDK)
#   system        rules of udev and limits of users; for packages, only when they are asked for by name
#   development   programs that measure and try the recorder; only when they are asked for by name
#
# A program finds drivers and registry.d beside itself, so that all of them share one folder. On Windows that is the
# prefix; elsewhere it is lib/tarno2, with links in bin. A package puts the registry texts into /etc/tarno2/registry.d
# instead (TARNO2_REGISTRY_FOLDER), where an administrator may change them.
include(GNUInstallDirs)
if(WIN32)
    set(TARNO2_PROGRAM_FOLDER .)
    set(TARNO2_DOC_FOLDER .)
    set(TARNO2_DATA_FOLDER .)
else()
    set(TARNO2_PROGRAM_FOLDER ${CMAKE_INSTALL_LIBDIR}/tarno2)
    set(TARNO2_DOC_FOLDER ${CMAKE_INSTALL_DATAROOTDIR}/doc/tarno2)
    set(TARNO2_DATA_FOLDER ${CMAKE_INSTALL_DATADIR}/tarno2)
endif()

set(TARNO2_REGISTRY_FOLDER ${TARNO2_PROGRAM_FOLDER}/registry.d CACHE STRING
    "Where the texts that list drivers are installed: below the prefix, or from the root")
# The file beside a program by which it knows that it was installed, and keeps nothing in its own folder.
set(TARNO2_INSTALLED_MARK installed.txt)

# A link in bin to an installed program.
function(tarno2_install_link name)
    if(WIN32)
        return()
    endif()
    file(RELATIVE_PATH program /${CMAKE_INSTALL_BINDIR} /${TARNO2_PROGRAM_FOLDER}/${name})
    install(CODE "set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
        file(MAKE_DIRECTORY \"\${folder}\")
        file(CREATE_LINK \"${program}\" \"\${folder}/${name}\" SYMBOLIC)" COMPONENT runtime)
endfunction()

install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${TARNO2_DOC_FOLDER} COMPONENT runtime)
install(DIRECTORY docs DESTINATION ${TARNO2_DOC_FOLDER} COMPONENT runtime PATTERN man EXCLUDE)
install(DIRECTORY sdk/tarno2 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT sdk FILES_MATCHING PATTERN "*.h")
install(FILES sdk/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/tarno2/sdk COMPONENT sdk)
install(DIRECTORY sdk/example sdk/example-tcp DESTINATION ${CMAKE_INSTALL_DATADIR}/tarno2/sdk COMPONENT sdk)

# find_package(Tarno2SDK) gives the target Tarno2::SDK: headers alone, the same on every machine.
include(CMakePackageConfigHelpers)
set(TARNO2_SDK_CMAKE ${CMAKE_INSTALL_DATADIR}/cmake/Tarno2SDK)
configure_package_config_file(cmake/Tarno2SDKConfig.cmake.in ${PROJECT_BINARY_DIR}/sdk/Tarno2SDKConfig.cmake
                              INSTALL_DESTINATION ${TARNO2_SDK_CMAKE} PATH_VARS CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/sdk/Tarno2SDKConfigVersion.cmake COMPATIBILITY SameMajorVersion
                                 ARCH_INDEPENDENT)
install(FILES ${PROJECT_BINARY_DIR}/sdk/Tarno2SDKConfig.cmake ${PROJECT_BINARY_DIR}/sdk/Tarno2SDKConfigVersion.cmake
        DESTINATION ${TARNO2_SDK_CMAKE} COMPONENT sdk)

if(NOT WIN32)
    include(cmake/Desktop.cmake)
endif()
