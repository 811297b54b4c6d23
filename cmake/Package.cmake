# Installation: headers, libraries, tool, and what find_package(tarn_lapack) needs.
include(CMakePackageConfigHelpers)

set(package_targets tarn_core tarn_lapack)
if(TARN_PROVIDER STREQUAL software)
    list(APPEND package_targets tarn_softdev)
endif()
install(TARGETS ${package_targets} EXPORT tarn_lapack_targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/tarn_core.h include/tarn_lapack.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tarn_lapack_targets FILE tarn_lapack-targets.cmake NAMESPACE tarn::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tarn_lapack)
export(EXPORT tarn_lapack_targets NAMESPACE tarn:: FILE ${PROJECT_BINARY_DIR}/tarn_lapack-targets.cmake)
if(TARN_BUILD_TOOLS)
    install(TARGETS tarn)
    install(DIRECTORY data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tarn_lapack)
endif()

configure_package_config_file(cmake/tarn_lapack-config.cmake.in ${PROJECT_BINARY_DIR}/tarn_lapack-config.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tarn_lapack)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tarn_lapack-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tarn_lapack-config.cmake ${PROJECT_BINARY_DIR}/tarn_lapack-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tarn_lapack)
