# Completions of the command line, where each shell looks for those that are installed. Debian's own packages keep those
# for zsh in share/zsh/vendor-completions.
set(VANTORY_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Where zsh looks for completions")
set(completions ${CMAKE_SOURCE_DIR}/resources/completions)
install(FILES ${completions}/vantory.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME vantory)
install(FILES ${completions}/_vantory DESTINATION ${VANTORY_ZSH_COMPLETIONS})
install(FILES ${completions}/vantory.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
