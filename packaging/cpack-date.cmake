# Read by cpack: everything in a package bears the date of the commit, or the one that the environment asks for.
if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
  execute_process(COMMAND git log -1 --format=%ct WORKING_DIRECTORY ${CMAKE_CURRENT_LIST_DIR}
                  OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(date)
    set(ENV{SOURCE_DATE_EPOCH} ${date})
  endif()
endif()
