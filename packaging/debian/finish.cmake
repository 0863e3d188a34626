# Run by cpack on the installed files, before they are packed: what Debian wants of documents in a package.
set(package ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/vantory${CPACK_PACKAGING_INSTALL_PREFIX}/share)
set(gui_package ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/gui${CPACK_PACKAGING_INSTALL_PREFIX}/share)

function(compress file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD ${file}.gz PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

set(documents ${package}/doc/vantory)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${documents}/changelog.Debian @ONLY)
compress(${documents}/changelog.Debian)
file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)
compress(${documents}/changelog)

file(GLOB pages ${package}/man/man*/*.[1-8])
foreach(page IN LISTS pages)
  compress(${page})
endforeach()

set(catalogs_package ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/catalogs${CPACK_PACKAGING_INSTALL_PREFIX}/share)
if(EXISTS ${catalogs_package})
  file(MAKE_DIRECTORY ${catalogs_package}/doc)
  file(CREATE_LINK vantory ${catalogs_package}/doc/vantory-catalogs SYMBOLIC)
endif()

if(EXISTS ${gui_package})
  file(MAKE_DIRECTORY ${gui_package}/doc)
  file(CREATE_LINK vantory ${gui_package}/doc/vantory-gui SYMBOLIC)
  if(EXISTS ${package}/man/man1/vantory.1.gz)
    file(MAKE_DIRECTORY ${gui_package}/man/man1)
    file(CREATE_LINK vantory.1.gz ${gui_package}/man/man1/vantory-window.1.gz SYMBOLIC)
  endif()
endif()

# Whatever the umask of who runs cpack.
execute_process(COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY} -type d -exec chmod 755 {} + COMMAND_ERROR_IS_FATAL ANY)
