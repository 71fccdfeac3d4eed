# Installs the headers, the library, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/vexa)

install(TARGETS vexa EXPORT vexaTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT vexaTargets NAMESPACE vexa:: DESTINATION ${packageFolder})

configure_package_config_file(cmake/vexaConfig.cmake.in ${CMAKE_BINARY_DIR}/vexaConfig.cmake
    INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/vexaConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/vexaConfig.cmake ${CMAKE_BINARY_DIR}/vexaConfigVersion.cmake
    DESTINATION ${packageFolder})

# The way from the pkg-config file to the prefix, so that it follows an install to another one.
file(RELATIVE_PATH prefixFromPc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/vexa.pc.in ${CMAKE_BINARY_DIR}/vexa.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/vexa.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
