# Builds for one processor of macOS 12 and later, on Debian, with what scripts/macos-tools has fetched.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 21) # the kernel of macOS 12
set(VANTORY_MACOS_PROCESSOR aarch64 CACHE STRING "Processor to build for: aarch64 or x86_64")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTORY_MACOS_PROCESSOR)
set(CMAKE_SYSTEM_PROCESSOR ${VANTORY_MACOS_PROCESSOR})

get_filename_component(tools ${CMAKE_CURRENT_LIST_DIR}/../../build/macos-tools ABSOLUTE)
set(zig ${tools}/compiler/zig)
set(target ${VANTORY_MACOS_PROCESSOR}-macos.12.0)
set(CMAKE_C_COMPILER ${zig} cc -target ${target})
set(CMAKE_CXX_COMPILER ${zig} c++ -target ${target})
foreach(language C CXX)
  set(CMAKE_${language}_ARCHIVE_CREATE "${zig} ar qc <TARGET> <LINK_FLAGS> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_APPEND "${zig} ar q <TARGET> <LINK_FLAGS> <OBJECTS>")
  set(CMAKE_${language}_ARCHIVE_FINISH "${zig} ranlib <TARGET>")
endforeach()

# The compiler knows where the headers of the system are; what this machine has is not for that one.
set(CMAKE_OSX_SYSROOT "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "said by the compiler's target")
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH ${tools})
