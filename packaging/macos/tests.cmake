# Tests that a user with a Mac can run, beside the self-check: those of what knows no system, and of what each platform's
# disk promises. Built with Debian's sources of GoogleTest; nothing here can run them.
set(googletest /usr/src/googletest)
if(NOT EXISTS ${googletest})
  message(STATUS "tests for macOS: no, there are no sources of GoogleTest")
  return()
endif()
add_library(vantory_googletest STATIC ${googletest}/googletest/src/gtest-all.cc ${googletest}/googlemock/src/gmock-all.cc
  ${googletest}/googlemock/src/gmock_main.cc)
target_include_directories(vantory_googletest SYSTEM PUBLIC ${googletest}/googletest/include
  ${googletest}/googlemock/include PRIVATE ${googletest}/googletest ${googletest}/googlemock)

file(GLOB base_tests CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/base/*.cpp)
add_executable(base_tests ${base_tests})
vantory_link(base_tests PRIVATE base)
set(tests ${CMAKE_SOURCE_DIR}/tests)
add_executable(platform_tests ${tests}/macos/Disks.cpp ${tests}/platform/FileSystemTest.cpp
  ${tests}/platform/ChecksumTest.cpp ${tests}/support/ScratchFolder.cpp)
vantory_link(platform_tests PRIVATE platform/macos)
foreach(program base_tests platform_tests)
  target_link_libraries(${program} PRIVATE vantory_googletest)
endforeach()
