# What a plain `cmake -S . -B build` gets. A project that embeds this one keeps its own choices.

if(LOG4VRK_INSTALL)
  include(GNUInstallDirs)
endif()

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_CXX_EXTENSIONS OFF)
  if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
  endif()
endif()
