# Builds for users get the protection that Debian gives its own programs, and hold no path of the folder they were built
# in: the same source gives the same bytes everywhere.
include(CheckCXXCompilerFlag)

set(release "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
add_compile_options(-Wformat -Werror=format-security
  "$<${release}:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>" "$<${release}:-ffile-prefix-map=${CMAKE_BINARY_DIR}=build>")
if(VANTORY_SANITIZE)
  return()
endif()

add_compile_options("$<${release}:-U_FORTIFY_SOURCE>" "$<${release}:-D_FORTIFY_SOURCE=2>")
foreach(flag -fPIE -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "takes${flag}" takes)
  check_cxx_compiler_flag("-Werror ${flag}" ${takes})
  if(${takes})
    add_compile_options("$<${release}:${flag}>")
  endif()
endforeach()
if(APPLE) # whose linker does the like by itself
  return()
endif()
add_link_options("$<$<AND:${release},$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>>:LINKER:-z,relro,-z,now;-pie>")
