# How a desktop knows the windowed program: its entry in the menu, its name on the session bus, what software centers
# show, the project files that it opens, and icons for all of them.
set(resources ${CMAKE_SOURCE_DIR}/resources)
set(icon_theme ${CMAKE_INSTALL_DATADIR}/icons/hicolor)

install(FILES ${resources}/com.quarrywell.Vantory.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT gui)
configure_file(${CMAKE_SOURCE_DIR}/packaging/dbus/com.quarrywell.Vantory.service.in
               ${CMAKE_BINARY_DIR}/com.quarrywell.Vantory.service @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/com.quarrywell.Vantory.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services
        COMPONENT gui)
install(CODE "set(built_for \"${CMAKE_INSTALL_PREFIX}\")
set(service \"${CMAKE_INSTALL_DATADIR}/dbus-1/services/com.quarrywell.Vantory.service\")" COMPONENT gui)
install(SCRIPT ${CMAKE_SOURCE_DIR}/packaging/dbus/installed-paths.cmake COMPONENT gui)
install(FILES ${resources}/com.quarrywell.Vantory.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
        COMPONENT gui)
install(FILES ${resources}/mime/com.quarrywell.Vantory.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
        COMPONENT gui)
install(DIRECTORY ${resources}/hicolor/ DESTINATION ${icon_theme} COMPONENT gui)
install(FILES ${resources}/icons/vantory.svg DESTINATION ${icon_theme}/scalable/apps
        RENAME com.quarrywell.Vantory.svg COMPONENT gui)

# A project file looks like the application that it belongs to.
function(vantory_file_icon type application)
  install(FILES "${resources}/icons/${application}.svg" DESTINATION ${icon_theme}/scalable/mimetypes
          RENAME application-x-vantory-${type}.svg COMPONENT gui)
endfunction()
vantory_file_icon(fcp "Final Cut Pro")
vantory_file_icon(stap "Soundtrack Pro")
vantory_file_icon(stmp "Soundtrack Pro")
vantory_file_icon(motn Motion)
vantory_file_icon(ipr LiveType)
vantory_file_icon(dspproj "DVD Studio Pro")
vantory_file_icon(compressor Compressor_app)
vantory_file_icon(colorproj Color)
