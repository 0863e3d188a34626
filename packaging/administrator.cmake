# The helper program with the superuser's rights, and the permission to start it.
set(VANTORY_POLKIT_ACTIONS /usr/share/polkit-1/actions CACHE PATH "Where the machine's polkit looks for actions")

file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/platform/linux/administrator/*.cpp)
add_executable(vantory-root-helper ${sources})
target_link_libraries(vantory-root-helper PRIVATE vantory_platform_linux)

set(policy ${CMAKE_BINARY_DIR}/com.quarrywell.vantory.policy)
configure_file(${CMAKE_SOURCE_DIR}/packaging/polkit/com.quarrywell.vantory.policy.in ${policy} @ONLY)

install(TARGETS vantory-root-helper RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/vantory
        PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

install(CODE "set(policy \"${policy}\")
set(built_for \"${CMAKE_INSTALL_PREFIX}\")
set(polkit_actions \"${VANTORY_POLKIT_ACTIONS}\")
set(helper_folder \"${CMAKE_INSTALL_LIBEXECDIR}/vantory\")")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/install-rights.cmake)
