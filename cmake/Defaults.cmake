# What a plain `cmake -S . -B build` gets. A project that embeds this one keeps its own choices.

include(GNUInstallDirs)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_CXX_EXTENSIONS OFF)
  if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
  endif()
  # Here and not in the presets, so that they work on a machine without ccache.
  find_program(LOG4VRK_CCACHE ccache)
  mark_as_advanced(LOG4VRK_CCACHE)
  if(LOG4VRK_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${LOG4VRK_CCACHE}")
  endif()
endif()
