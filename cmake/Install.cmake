# `cmake --install`: the same include lines work in and out of the tree, and the installed tree may be moved.

include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/log4vrk")
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(TARGETS log4vrk EXPORT log4vrk-targets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
# ldconfig passes over files whose names do not begin with "lib". By this link it finds the library, and enters it under
# the library's own name.
file(CREATE_LINK "tovlog4vrk.so.${PROJECT_VERSION}" "${PROJECT_BINARY_DIR}/libtovlog4vrk.so.${PROJECT_VERSION_MAJOR}"
     SYMBOLIC)
install(FILES "${PROJECT_BINARY_DIR}/libtovlog4vrk.so.${PROJECT_VERSION_MAJOR}" DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS log4vrk_xml log4vrk_zones log4vrk_compress LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(FILES README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" OPTIONAL)

# The library hides what it links, so its list of targets is the whole package.
install(EXPORT log4vrk-targets FILE log4vrkConfig.cmake NAMESPACE log4vrk:: DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/log4vrkConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/log4vrkConfigVersion.cmake" DESTINATION "${package_dir}")

file(RELATIVE_PATH prefix_from_pkgconfig "/${pkgconfig_dir}" "/")
configure_file(cmake/log4vrk.pc.in "${PROJECT_BINARY_DIR}/log4vrk.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/log4vrk.pc" DESTINATION "${pkgconfig_dir}")
