# Builds for each processor of a Mac in a folder of its own below the build folder.
include(ExternalProject)

foreach(processor aarch64 x86_64)
  ExternalProject_Add(${processor}
    SOURCE_DIR ${CMAKE_SOURCE_DIR}
    BINARY_DIR ${CMAKE_BINARY_DIR}/${processor}
    PREFIX ${CMAKE_BINARY_DIR}/${processor}-steps
    CMAKE_ARGS -DCMAKE_TOOLCHAIN_FILE=${CMAKE_SOURCE_DIR}/packaging/macos/toolchain.cmake
      -DVANTORY_MACOS_PROCESSOR=${processor} -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE} -DVANTORY_WERROR=${VANTORY_WERROR}
      -DVANTORY_TESTS=OFF -DVANTORY_WINDOW=OFF
    INSTALL_COMMAND ""
    BUILD_ALWAYS ON
    USES_TERMINAL_BUILD ON)
endforeach()
