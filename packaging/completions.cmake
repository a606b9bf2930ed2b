# The shells look for a command's completions in a file of the command's name.
function(stm_completion command component)
  install(FILES completions/${command}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT ${component})
  install(FILES completions/_${command}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT ${component})
endfunction()

if(BUILD_STMCTL)
  stm_completion(stmctl tools)
endif()
stm_completion(virtual-board simulator)
