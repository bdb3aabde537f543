include(GNUInstallDirs)
set(LOG4VRK_INSTALL ON)                                        # before the library is added
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")  # programs find it beside themselves
