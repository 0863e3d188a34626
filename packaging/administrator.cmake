# What lets users start the root helper, and lend its capability to the lock helper.
set(VANTORY_POLKIT_ACTIONS /usr/share/polkit-1/actions CACHE PATH "Where the machine's polkit looks for actions")

set(policy ${CMAKE_BINARY_DIR}/com.quarrywell.vantory.policy)
configure_file(${CMAKE_SOURCE_DIR}/packaging/polkit/com.quarrywell.vantory.policy.in ${policy} @ONLY)

install(CODE "set(policy \"${policy}\")
set(built_for \"${CMAKE_INSTALL_PREFIX}\")
set(polkit_actions \"${VANTORY_POLKIT_ACTIONS}\")
set(helper_folder \"${CMAKE_INSTALL_LIBEXECDIR}/vantory\")")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/install-rights.cmake)
