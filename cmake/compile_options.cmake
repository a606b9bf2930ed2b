# The options for every target of ours.

option(STM_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

# -Wpsabi warns about ARM compilers before version 7, which does not matter here.
set(STM_WARNINGS -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wno-psabi)
set(STM_SANITIZERS -fsanitize=address,undefined -fno-sanitize-recover=all)

# Include paths start at the root of the tree.
function(stm_target target)
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_options(${target} PRIVATE ${STM_WARNINGS})
endfunction()

# Targets that are loaded into other programs are not instrumented in any build. -O1 finds all that
# -O2 does, and compiles faster.
function(stm_sanitize target)
  if(STM_SANITIZE)
    target_compile_options(${target} PRIVATE ${STM_SANITIZERS} -O1 -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC ${STM_SANITIZERS})
  endif()
endfunction()

# For programs that contain instrumented code, but are not checked themselves.
function(stm_link_sanitized target)
  if(STM_SANITIZE)
    target_compile_definitions(${target} PRIVATE STM_SANITIZED)
    target_link_options(${target} PRIVATE ${STM_SANITIZERS})
  endif()
endfunction()
