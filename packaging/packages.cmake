# Debian packages, made by cpack: "vantory" for the command line, without Qt, "vantory-gui", the window to it, and
# "vantory-catalogs", definitions of further applications.
# They fit the folders that the build was configured for, so configure it with the prefix /usr (preset "package").
set(documents ${CMAKE_INSTALL_DATADIR}/doc)
install(FILES packaging/debian/copyright CHANGELOG.md docs/catalogs.md DESTINATION ${documents}/vantory)
install(FILES packaging/debian/vantory.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        RENAME vantory)

configure_file(packaging/systemd/vantory-autobackup.service.in vantory-autobackup.service @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/vantory-autobackup.service packaging/systemd/vantory-autobackup.timer
        DESTINATION lib/systemd/user)

# Added to those that are built in, where an administrator wants them.
install(DIRECTORY resources/catalogs DESTINATION ${CMAKE_INSTALL_DATADIR}/vantory COMPONENT catalogs EXCLUDE_FROM_ALL
        FILES_MATCHING PATTERN "*.plist")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantory)
set(CPACK_PACKAGE_VENDOR Quarrywell)
set(CPACK_PACKAGE_CONTACT "Quarrywell <vantory@quarrywell.com>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://www.quarrywell.com/vantory/)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_SOURCE_DIR}/packaging/cpack-date.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/debian/finish.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/debian/pack-anew.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_COMPONENTS_ALL vantory catalogs)
set(CPACK_DEBIAN_VANTORY_PACKAGE_NAME vantory)
set(CPACK_DEBIAN_VANTORY_PACKAGE_DEPENDS libcap2-bin)
set(CPACK_DEBIAN_VANTORY_PACKAGE_SUGGESTS "vantory-gui, vantory-catalogs")
set(CPACK_DEBIAN_VANTORY_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/debian/postinst ${CMAKE_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_COMPONENT_VANTORY_DESCRIPTION "preferences of video editing applications, on the command line
Vantory looks after the preference files of professional video editing
applications: Final Cut Pro, Motion, Avid Media Composer, Adobe Premiere Pro,
After Effects and a dozen more. It moves them to the Trash when an
application misbehaves, backs them up, restores them and locks them against
changes.

This package holds the tasks of the command line, for scripts and servers.")

set(CPACK_DEBIAN_CATALOGS_PACKAGE_NAME vantory-catalogs)
set(CPACK_DEBIAN_CATALOGS_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_CATALOGS_PACKAGE_DEPENDS "vantory (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_COMPONENT_CATALOGS_DESCRIPTION "preferences of video editing applications, more of them
Vantory looks after the preference files of professional video editing
applications.

This package adds definitions of others to those that are built in: the
editors that Debian packages, such as Kdenlive, Shotcut, Blender and OBS
Studio, DaVinci Resolve, and present editions of Final Cut Pro, Motion,
Compressor, Media Composer and Adobe's applications.")

if(VANTORY_WINDOW)
  install(FILES packaging/debian/vantory-gui.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
          RENAME vantory-gui COMPONENT gui)
  list(APPEND CPACK_COMPONENTS_ALL gui)
  set(CPACK_DEBIAN_GUI_PACKAGE_NAME vantory-gui)
  set(CPACK_DEBIAN_GUI_PACKAGE_DEPENDS "vantory (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
  set(recommended "default-dbus-session-bus | dbus-session-bus" hicolor-icon-theme libarchive-tools pkexec
      shared-mime-info xdg-utils)
  list(JOIN recommended ", " CPACK_DEBIAN_GUI_PACKAGE_RECOMMENDS)
  set(CPACK_COMPONENT_GUI_DESCRIPTION "preferences of video editing applications, in a window
Vantory looks after the preference files of professional video editing
applications: Final Cut Pro, Motion, Avid Media Composer, Adobe Premiere Pro,
After Effects and a dozen more. It moves them to the Trash when an
application misbehaves, backs them up, restores them and locks them against
changes.

This package holds the windowed program.")
endif()
include(CPack)
