# Where things go on Linux. The programs look for each other, for language modules and for the help beside
# themselves, so all of that has a folder of its own and the commands on the path are links into it.

include(GNUInstallDirs)
set(QUORIL_PROGRAM_DIR ${CMAKE_INSTALL_LIBDIR}/quoril-services-manager)
set(bin ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

# quoril_install(COMPONENT name PROGRAMS target...): the programs, with a command on the path for each.
function(quoril_install)
  cmake_parse_arguments(INSTALL "" "COMPONENT" "PROGRAMS" ${ARGN})
  install(TARGETS ${INSTALL_PROGRAMS} RUNTIME DESTINATION ${QUORIL_PROGRAM_DIR} COMPONENT ${INSTALL_COMPONENT})
  file(RELATIVE_PATH folder /${CMAKE_INSTALL_BINDIR} /${QUORIL_PROGRAM_DIR})
  foreach(program IN LISTS INSTALL_PROGRAMS)
    install(CODE "
      set(commands \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
      file(MAKE_DIRECTORY \"\${commands}\")
      file(CREATE_LINK ${folder}/${program} \"\${commands}/${program}\" SYMBOLIC)"
      COMPONENT ${INSTALL_COMPONENT})
    install(FILES ${PROJECT_SOURCE_DIR}/docs/man/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
      COMPONENT ${INSTALL_COMPONENT})
  endforeach()
endfunction()

quoril_install(COMPONENT manager PROGRAMS QuorilManager QuorilSetup quorilctl)
install(TARGETS quoril-service-host RUNTIME DESTINATION ${QUORIL_PROGRAM_DIR} COMPONENT manager)
quoril_install(COMPONENT emulator PROGRAMS quoril-emulator)

install(FILES ${bin}/QuorilManager.hlp ${bin}/QuorilManagerENU.hlp DESTINATION ${QUORIL_PROGRAM_DIR} COMPONENT manager)
foreach(code DEU DEA DES DEL DEC)
  install(FILES ${bin}/QuorilManagerLang${code}.dll ${bin}/QuorilManager${code}.hlp DESTINATION ${QUORIL_PROGRAM_DIR}
    COMPONENT manager)
endforeach()

# What operators and administrators read, in the folders that its links expect.
set(documents ${CMAKE_INSTALL_DATADIR}/doc/quoril-services-manager)
foreach(page administering fleet instances operating quorilctl windows)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/${page}.md DESTINATION ${documents}/docs COMPONENT manager)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples/fleet DESTINATION ${documents}/samples COMPONENT manager)

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(icons ${PROJECT_SOURCE_DIR}/src/resources/icons)
install(FILES ${packaging}/linux/quoril-services-manager.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications
  COMPONENT manager)
configure_file(${packaging}/linux/com.quoril.ServicesManager.metainfo.xml.in
  ${PROJECT_BINARY_DIR}/com.quoril.ServicesManager.metainfo.xml @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/com.quoril.ServicesManager.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
  COMPONENT manager)
install(FILES ${packaging}/completions/quorilctl DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  COMPONENT manager)
set(hicolor ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${icons}/application.svg DESTINATION ${hicolor}/scalable/apps RENAME quoril-services-manager.svg
  COMPONENT manager)
foreach(size 16 32 48 64 128 256)
  install(FILES ${icons}/application-${size}.png DESTINATION ${hicolor}/${size}x${size}/apps
    RENAME quoril-services-manager.png COMPONENT manager)
endforeach()
