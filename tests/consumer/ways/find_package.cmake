find_package(log4vrk 1.0 REQUIRED)
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)  # installed programs find the library where it is now
