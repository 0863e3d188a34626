# Libraries that go into the programs for macOS: on a Mac those it has, elsewhere built from their sources.
if(NOT CMAKE_CROSSCOMPILING)
  find_package(FastFloat REQUIRED)
  find_package(pugixml REQUIRED)
  return()
endif()

set(sources ${CMAKE_SOURCE_DIR}/build/macos-tools)
add_library(pugixml STATIC ${sources}/pugixml/src/pugixml.cpp)
target_include_directories(pugixml SYSTEM PUBLIC ${sources}/pugixml/src)
add_library(pugixml::pugixml ALIAS pugixml)

# As C++, of which it is a part: there is no need for a second language.
file(WRITE ${CMAKE_BINARY_DIR}/xxhash.cpp "#include \"xxhash.c\"\n")
add_library(xxhash STATIC ${CMAKE_BINARY_DIR}/xxhash.cpp)
target_include_directories(xxhash SYSTEM PRIVATE ${sources}/xxhash)
set(XXHASH_LIBRARY xxhash)
set(XXHASH_INCLUDE ${sources}/xxhash)

# Headers only, and the same for every system.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/include)
file(CREATE_LINK /usr/include/fast_float ${CMAKE_BINARY_DIR}/include/fast_float SYMBOLIC)
add_library(FastFloat::fast_float INTERFACE IMPORTED)
target_include_directories(FastFloat::fast_float INTERFACE ${CMAKE_BINARY_DIR}/include)
