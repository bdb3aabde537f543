# Warnings are private to each target, so they never reach the targets of a user. The presets turn them into errors
# (CMAKE_COMPILE_WARNING_AS_ERROR).

function(log4vrk_enable_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    target_compile_options(${target} PRIVATE -Wthread-safety -Werror=thread-safety)
  endif()
endfunction()
