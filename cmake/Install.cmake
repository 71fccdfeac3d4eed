# Installs the headers, the library, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/vexa)

install(TARGETS vexa EXPORT vexaTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h"
    PATTERN vexaDigests.h EXCLUDE)
if(VEXA_DIGESTS)
    install(FILES include/vexaDigests.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()
install(EXPORT vexaTargets NAMESPACE vexa:: DESTINATION ${packageFolder})

configure_package_config_file(cmake/vexaConfig.cmake.in ${PROJECT_BINARY_DIR}/vexaConfig.cmake
    INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vexaConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vexaConfig.cmake ${PROJECT_BINARY_DIR}/vexaConfigVersion.cmake
    DESTINATION ${packageFolder})

# By the way from the pkg-config file to the prefix it follows an install to another one.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(pcPrefix ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH prefixFromPc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
    set(pcPrefix "\${pcfiledir}/${prefixFromPc}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
    if(IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
        set(pc${folder} ${CMAKE_INSTALL_${folder}})
    else()
        set(pc${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
configure_file(cmake/vexa.pc.in ${PROJECT_BINARY_DIR}/vexa.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vexa.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
