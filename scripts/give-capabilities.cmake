# A step of the installation, run by CMake: the lock helper gets the one capability that it lends its callers. That takes
# the superuser; a package gives it when it is installed.
cmake_path(ABSOLUTE_PATH helper_folder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
set(helper "$ENV{DESTDIR}${helper_folder}/vantory-lock-helper")
find_program(SETCAP setcap PATHS /usr/sbin /sbin)
set(failed TRUE)
if(SETCAP)
  execute_process(COMMAND ${SETCAP} cap_linux_immutable=ep "${helper}" RESULT_VARIABLE failed ERROR_QUIET)
endif()
if(failed)
  message(STATUS "Locking will need the superuser until this is run as root:\n"
                 "     setcap cap_linux_immutable=ep ${helper}")
endif()
