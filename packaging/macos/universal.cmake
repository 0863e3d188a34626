# Builds for each processor of a Mac in a folder of its own below the build folder, and joins the programs in "universal".
include(ExternalProject)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# The window, which no program has yet, and its rooms are compiled for one processor: that shows that they know no system.
set(helpers vantory-due vantory-root-helper)
set(programs vantory ${helpers})
set(tests)
if(EXISTS /usr/src/googletest)
  set(tests base_tests platform_tests)
endif()
set(targets_aarch64 all)
set(targets_x86_64 ${programs} ${tests})

foreach(processor aarch64 x86_64)
  ExternalProject_Add(${processor}
    SOURCE_DIR ${CMAKE_SOURCE_DIR}
    BINARY_DIR ${CMAKE_BINARY_DIR}/${processor}
    PREFIX ${CMAKE_BINARY_DIR}/${processor}-steps
    CMAKE_ARGS -DCMAKE_TOOLCHAIN_FILE=${CMAKE_SOURCE_DIR}/packaging/macos/toolchain.cmake
      -DVANTORY_MACOS_PROCESSOR=${processor} -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE} -DVANTORY_WERROR=${VANTORY_WERROR}
      -DCMAKE_CXX_FLAGS_RELEASE=${CMAKE_CXX_FLAGS_RELEASE} -DVANTORY_TESTS=OFF -DVANTORY_WINDOW=OFF
    BUILD_COMMAND ${CMAKE_COMMAND} --build <BINARY_DIR> --target ${targets_${processor}}
    INSTALL_COMMAND ""
    BUILD_ALWAYS ON
    USES_TERMINAL_BUILD ON)
endforeach()

# Each is looked at once it is joined, because nothing here can run it.
set(join ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/packaging/macos/universal.py)
set(folder ${CMAKE_BINARY_DIR}/universal)
set(steps)
foreach(program ${programs} ${tests})
  list(APPEND steps
    COMMAND ${join} join ${folder}/${program} ${CMAKE_BINARY_DIR}/aarch64/${program} ${CMAKE_BINARY_DIR}/x86_64/${program}
    COMMAND ${join} check ${folder}/${program})
endforeach()
file(MAKE_DIRECTORY ${folder})
add_custom_target(universal ALL ${steps} VERBATIM)
add_dependencies(universal aarch64 x86_64)
# One after the other: each build uses all there is.
add_dependencies(x86_64 aarch64)

# What a person unpacks on a Mac: all that is installed, with the joined programs, and what puts it in its place.
set(name vantory-${PROJECT_VERSION}-macos)
set(look ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/packaging/macos/archive.py)
set(stage ${CMAKE_BINARY_DIR}/archive)
add_custom_target(archive ALL
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${stage}
  COMMAND ${CMAKE_COMMAND} --install ${CMAKE_BINARY_DIR}/aarch64 --prefix ${stage}/${name}
  COMMAND ${CMAKE_COMMAND} -E copy ${folder}/vantory ${stage}/${name}/bin
  COMMAND ${CMAKE_COMMAND} -E chdir ${folder} ${CMAKE_COMMAND} -E copy ${helpers} ${stage}/${name}/libexec/vantory
  COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_SOURCE_DIR}/packaging/macos/install.sh ${stage}/${name}
  COMMAND ${CMAKE_COMMAND} -E chdir ${stage} ${CMAKE_COMMAND} -E tar czf ${CMAKE_BINARY_DIR}/${name}.tar.gz ${name}
  COMMAND ${look} ${CMAKE_BINARY_DIR}/${name}.tar.gz ${CMAKE_SOURCE_DIR}/packaging/macos/archive-contents
  VERBATIM)
add_dependencies(archive universal)

# And tests to run there.
if(tests)
  set(name ${name}-tests)
  list(TRANSFORM tests PREPEND ${folder}/)
  add_custom_target(tests_archive ALL
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${stage}/${name}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${stage}/${name}
    COMMAND ${CMAKE_COMMAND} -E copy ${tests} ${CMAKE_SOURCE_DIR}/packaging/macos/run-tests.sh ${stage}/${name}
    COMMAND ${CMAKE_COMMAND} -E chdir ${stage} ${CMAKE_COMMAND} -E tar czf ${CMAKE_BINARY_DIR}/${name}.tar.gz ${name}
    COMMAND ${look} ${CMAKE_BINARY_DIR}/${name}.tar.gz ${CMAKE_SOURCE_DIR}/packaging/macos/tests-contents
    VERBATIM)
  add_dependencies(tests_archive archive)
endif()
