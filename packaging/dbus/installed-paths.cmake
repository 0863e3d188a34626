# A step of the installation, run by CMake: the session bus starts the programs where they are installed, which need not
# be where they were built for.
string(REGEX REPLACE "/$" "" built_for "${built_for}")
if(NOT CMAKE_INSTALL_PREFIX STREQUAL built_for)
  cmake_path(ABSOLUTE_PATH service BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
  file(READ "$ENV{DESTDIR}${service}" text)
  string(REPLACE "${built_for}/" "${CMAKE_INSTALL_PREFIX}/" text "${text}")
  file(WRITE "$ENV{DESTDIR}${service}" "${text}")
endif()
