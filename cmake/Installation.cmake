# What `cmake --install BUILD --component NAME` installs:
#
#   runtime       the programs, the library that draws signals, documents
#   drivers       the drivers that come with the program
#   sdk           what a driver's author needs: headers and an example
#   development   programs that measure and try the recorder; only when they are asked for by name
#
# A program finds drivers and registry.d beside itself, so that all of them share one folder. On Windows that is the
# prefix; elsewhere it is lib/tarno2, with links in bin.
include(GNUInstallDirs)
if(WIN32)
    set(TARNO2_PROGRAM_FOLDER .)
    set(TARNO2_DOC_FOLDER .)
else()
    set(TARNO2_PROGRAM_FOLDER ${CMAKE_INSTALL_LIBDIR}/tarno2)
    set(TARNO2_DOC_FOLDER ${CMAKE_INSTALL_DATAROOTDIR}/doc/tarno2)
endif()

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
install(DIRECTORY docs DESTINATION ${TARNO2_DOC_FOLDER} COMPONENT runtime)
install(DIRECTORY sdk/tarno2 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT sdk FILES_MATCHING PATTERN "*.h")
install(FILES sdk/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/tarno2/sdk COMPONENT sdk)
install(DIRECTORY sdk/example sdk/example-tcp DESTINATION ${CMAKE_INSTALL_DATADIR}/tarno2/sdk COMPONENT sdk)
