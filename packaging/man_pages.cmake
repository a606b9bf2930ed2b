# Pages and changelogs are compressed if gzip is available, as man expects and Debian requires.
find_program(STM_GZIP gzip)

# stm_compressed(source name result): result is the file to install.
function(stm_compressed source name result)
  set(compressed ${CMAKE_CURRENT_BINARY_DIR}/${name})
  if(NOT STM_GZIP)
    set(${result} ${source} PARENT_SCOPE)
    return()
  endif()
  add_custom_command(OUTPUT ${compressed} DEPENDS ${source}
    COMMAND ${STM_GZIP} -9nc ${source} > ${compressed} VERBATIM)
  add_custom_target(compressed_${name} ALL DEPENDS ${compressed})
  set(${result} ${compressed} PARENT_SCOPE)
endfunction()

function(stm_man_page page component)
  string(REGEX REPLACE ".*\\." "" section ${page})
  stm_compressed(${PROJECT_SOURCE_DIR}/man/${page} ${page}.gz file)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()

stm_man_page(stm_com_funcs.3 development)
stm_man_page(update.1 tools)
if(BUILD_STMCTL)
  stm_man_page(stmctl.1 tools)
endif()
stm_man_page(virtual-board.1 simulator)
