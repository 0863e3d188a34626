# A step of the installation, run by CMake: what takes the superuser. The policy lets polkit start the root helper; the
# capability is the one that the lock helper lends its callers. A package gives the capability when it is installed.
set(staging "$ENV{DESTDIR}")
execute_process(COMMAND id -u OUTPUT_VARIABLE user OUTPUT_STRIP_TRAILING_WHITESPACE)

# The policy names the helper by its path.
string(REGEX REPLACE "/$" "" built_for "${built_for}")
if(NOT CMAKE_INSTALL_PREFIX STREQUAL built_for)
  message(STATUS "Administrator rights cannot be asked for: this was built for ${built_for}. For them, configure it with\n"
                 "     -DCMAKE_INSTALL_PREFIX=${CMAKE_INSTALL_PREFIX}")
elseif(staging OR user STREQUAL "0")
  file(INSTALL "${policy}" DESTINATION "${polkit_actions}")
else()
  message(STATUS "Administrator rights cannot be asked for until the superuser puts this file into ${polkit_actions}:\n"
                 "     ${policy}")
endif()

if(NOT staging)
  cmake_path(ABSOLUTE_PATH helper_folder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
  find_program(SETCAP setcap PATHS /usr/sbin /sbin)
  set(failed TRUE)
  if(SETCAP)
    execute_process(COMMAND ${SETCAP} cap_linux_immutable=ep "${helper_folder}/vantory-lock-helper"
                    RESULT_VARIABLE failed ERROR_QUIET)
  endif()
  if(failed)
    message(STATUS "Locking will need the superuser until this is run as root:\n"
                   "     setcap cap_linux_immutable=ep ${helper_folder}/vantory-lock-helper")
  endif()
endif()
