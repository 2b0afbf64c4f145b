# What a desktop and a shell know of the programs: the component "desktop" of an installation, beside "runtime".
set(linux ${PROJECT_SOURCE_DIR}/packaging/linux)

file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${TARNO2_INSTALLED_MARK} CONTENT
     "These programs are installed: they keep settings and logs in the folder of each user.\n")
install(FILES ${PROJECT_BINARY_DIR}/${TARNO2_INSTALLED_MARK} DESTINATION ${TARNO2_PROGRAM_FOLDER} COMPONENT runtime)

file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.1)
install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)

# One text completes all programs; the shell looks for it under the name of each.
foreach(program Tarno2 tarno2-console tarno2-drivers tarno2-export tarno2-recover tarno2-thumbnail tarno2-verify)
    install(FILES ${linux}/tarno2.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
            RENAME ${program} COMPONENT desktop)
endforeach()
install(FILES ${linux}/_tarno2 DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT desktop)

install(FILES ${linux}/tarno2.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT desktop)
install(FILES ${linux}/tarno2.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT desktop)
install(FILES ${linux}/tarno2.thumbnailer DESTINATION ${CMAKE_INSTALL_DATADIR}/thumbnailers COMPONENT desktop)
set(PICTURES_URL "${TARNO2_PICTURES_URL}")
set(METAINFO ${PROJECT_BINARY_DIR}/generated/tarno2.metainfo.xml)
include(cmake/Metainfo.cmake)
install(FILES ${METAINFO} DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT desktop)
install(DIRECTORY ${linux}/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons COMPONENT desktop)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/tarno2.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT desktop)

# What the system has to allow: an administrator's matter, so only where a package is made.
install(FILES ${linux}/60-tarno2-iio.rules DESTINATION lib/udev/rules.d COMPONENT system EXCLUDE_FROM_ALL)
install(FILES ${linux}/tarno2-limits.conf DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/security/limits.d
        RENAME tarno2.conf COMPONENT system EXCLUDE_FROM_ALL)
