# Compiles the window for macOS with the headers of this machine's Qt, which are the same for every system: that shows
# that nothing in it leans on another one. There is no library of that Qt for a Mac here, so nothing is linked.
file(GLOB qt /usr/include/*/qt6)
if(NOT EXISTS "${qt}/QtWidgets")
  message(STATUS "window: not compiled for macOS, there are no headers of Qt 6")
  return()
endif()
file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/window/*/*.cpp ${CMAKE_SOURCE_DIR}/window/*/macos/*.cpp
     ${CMAKE_SOURCE_DIR}/programs/vantory-window/macos/*.cpp)
add_library(vantory_window_objects OBJECT ${sources})
vantory_link(vantory_window_objects PRIVATE tasks/ui platform/macos)
foreach(module "" /QtCore /QtGui /QtWidgets /QtSvg /QtDBus)
  target_include_directories(vantory_window_objects SYSTEM PRIVATE ${qt}${module})
endforeach()
# What most of them include, read once: else that is most of the work.
target_precompile_headers(vantory_window_objects PRIVATE <QApplication> <QBoxLayout> <QDialog> <QLabel> <QMainWindow>
  <QMenu> <QPainter> <QPushButton> <QTreeView> <functional> <map> <memory> <optional> <string> <vector>)
