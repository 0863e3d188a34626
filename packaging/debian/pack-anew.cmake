# Run by cpack on the packages: packed by Debian's own tool they do not depend on the umask of who packs them.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(unpacked ${CPACK_TOPLEVEL_DIRECTORY}/unpacked)
  file(REMOVE_RECURSE ${unpacked})
  execute_process(COMMAND sh -ec "umask 022; dpkg-deb -R \"$1\" \"$2\"; dpkg-deb --root-owner-group -Zxz -b \"$2\" \"$1\""
                          sh ${package} ${unpacked} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endforeach()

# In the build folder nothing of an earlier version may lie beside them: "apt install" is given all that is there.
if(EXISTS ${CPACK_PACKAGE_DIRECTORY}/CMakeCache.txt)
  file(GLOB earlier ${CPACK_PACKAGE_DIRECTORY}/vantory_*.deb ${CPACK_PACKAGE_DIRECTORY}/vantory-*_*.deb)
  if(earlier)
    file(REMOVE ${earlier})
  endif()
endif()
