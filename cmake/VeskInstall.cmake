# `cmake --install`, and the Debian packages that `cpack` makes of it:
# module (the download manager with the libraries that it stands on, the download library among
# them), dev (what a host compiles against), player (window and command line).
include(GNUInstallDirs)
# Two folders down, so that CPack does not take the libraries for ones that ldconfig has to know.
set(VESK_LIBDIR lib/playerx/host)
set(VESK_PLUGIN_INSTALL_DIR lib/playerx/plugins)

set_target_properties(kvpm KPIM KPXLibrary PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(downloadmanager KPB OnlineServices KPXPlayerPlugin PROPERTIES
  INSTALL_RPATH "$ORIGIN/../host")
set_target_properties(playerx playerx-cli PROPERTIES INSTALL_RPATH "$ORIGIN/../${VESK_LIBDIR}")

# The build finds its libraries in the same way, through links. CMake would end a path of its own, to
# be replaced when the files are installed, with an empty one: the folder that the user is in.
set_target_properties(kvpm KPIM KPXLibrary downloadmanager KPB OnlineServices KPXPlayerPlugin playerx
  playerx-cli PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH_USE_LINK_PATH ON)
file(MAKE_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/playerx)
file(CREATE_LINK .. ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/playerx/host SYMBOLIC)
file(CREATE_LINK . ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/host SYMBOLIC)

install(TARGETS kvpm KPIM KPXLibrary LIBRARY DESTINATION ${VESK_LIBDIR} COMPONENT module)
install(TARGETS downloadmanager KPB
  LIBRARY DESTINATION ${VESK_PLUGIN_INSTALL_DIR} COMPONENT module)
install(FILES ${VESK_PLUGIN_DIR}/downloadmanager.json ${VESK_PLUGIN_DIR}/KPB.json
  DESTINATION ${VESK_PLUGIN_INSTALL_DIR} COMPONENT module)

install(DIRECTORY host/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/playerx COMPONENT dev
  FILES_MATCHING PATTERN "*.h")
set(dev_pages ${CMAKE_INSTALL_DATADIR}/doc/playerx-dev)
install(FILES docs/hosting.md docs/threads.md docs/queue-file.md docs/tickets.md
  DESTINATION ${dev_pages} COMPONENT dev)
install(DIRECTORY examples DESTINATION ${dev_pages} COMPONENT dev)
set(package_folder lib/cmake/VeskHost)
include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/VeskHostConfig.cmake.in
  ${CMAKE_BINARY_DIR}/VeskHostConfig.cmake
  INSTALL_DESTINATION ${package_folder}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR VESK_LIBDIR VESK_PLUGIN_INSTALL_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/VeskHostConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/VeskHostConfig.cmake
  ${CMAKE_BINARY_DIR}/VeskHostConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT dev)

install(TARGETS playerx playerx-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT player)
install(TARGETS OnlineServices KPXPlayerPlugin
  LIBRARY DESTINATION ${VESK_PLUGIN_INSTALL_DIR} COMPONENT player)
install(FILES ${VESK_PLUGIN_DIR}/OnlineServices.json ${VESK_PLUGIN_DIR}/Player.json
  DESTINATION ${VESK_PLUGIN_INSTALL_DIR} COMPONENT player)
install(FILES packaging/playerx-cli.bash-completion RENAME playerx-cli
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT player)
install(FILES packaging/desktop/playerx.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT player)
install(FILES packaging/desktop/playerx-mime.xml RENAME playerx.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT player)
install(FILES packaging/desktop/com.vesk.playerx.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT player)
install(FILES playerx/window/icons/playerx.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT player)

foreach(package IN ITEMS module=playerx-download-manager dev=playerx-dev player=playerx)
  string(REGEX MATCH "^(.*)=(.*)$" pair ${package})
  install(FILES packaging/copyright CHANGELOG.md
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CMAKE_MATCH_2} COMPONENT ${CMAKE_MATCH_1})
endforeach()

# Manuals are what the programs say of themselves.
foreach(program IN ITEMS playerx playerx-cli)
  set(manual ${CMAKE_BINARY_DIR}/${program}.1)
  add_custom_command(OUTPUT ${manual}.gz
    COMMAND ${PROJECT_SOURCE_DIR}/packaging/make-manual $<TARGET_FILE:${program}> ${manual}
    COMMAND gzip -9nf ${manual}
    DEPENDS ${program} packaging/make-manual VERBATIM)
  list(APPEND manuals ${manual}.gz)
endforeach()
add_custom_target(manuals ALL DEPENDS ${manuals})
install(FILES ${manuals} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT player)

set(CPACK_DEBIAN_MODULE_PACKAGE_NAME playerx-download-manager)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME playerx-dev)
set(CPACK_DEBIAN_PLAYER_PACKAGE_NAME playerx)

# Each package says what has changed, as Debian wants it.
configure_file(packaging/changelog.in ${CMAKE_BINARY_DIR}/changelog @ONLY)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/changelog.gz
  COMMAND gzip -9nkf ${CMAKE_BINARY_DIR}/changelog
  DEPENDS ${CMAKE_BINARY_DIR}/changelog VERBATIM)
add_custom_target(package_changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/changelog.gz)
foreach(component IN ITEMS module dev player)
  string(TOUPPER ${component} upper)
  install(FILES ${CMAKE_BINARY_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Vesk)
set(CPACK_PACKAGE_CONTACT "Vesk <packages@vesk.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL module dev player)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_MODULE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PLAYER_PACKAGE_SECTION video)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "playerx-download-manager (= ${PROJECT_VERSION}), qt6-base-dev")
set(CPACK_DEBIAN_PLAYER_PACKAGE_DEPENDS "playerx-download-manager (= ${PROJECT_VERSION}), qt6-svg-plugins | libqt6svg6")
set(CPACK_DEBIAN_PLAYER_PACKAGE_RECOMMENDS "qt6-translations-l10n")
set(CPACK_COMPONENT_MODULE_DESCRIPTION "Download manager of a media player
A plug-in that keeps an ordered queue of films and downloads one after the
other, with the libraries that it stands on.")
set(CPACK_COMPONENT_DEV_DESCRIPTION "Headers to load the download manager into a player
Interfaces between a media player and the download manager, with a CMake
package that finds them.")
set(CPACK_COMPONENT_PLAYER_DESCRIPTION "Media player that downloads films
A window and a command line that share one queue of films. A film can be
watched while it arrives.")
include(CPack)
