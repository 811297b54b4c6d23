# Installation: headers, libraries, tool, and what find_package(tarn_lapack) and pkg-config need.
include(CMakePackageConfigHelpers)

set(package_targets tarn_core tarn_lapack tarn_refine)
# tarn::device: what a program needs that allocates device memory itself.
add_library(tarn_device_interface INTERFACE)
add_library(tarn::device ALIAS tarn_device_interface)
if(TARN_PROVIDER STREQUAL software)
    set_target_properties(tarn_device_interface PROPERTIES EXPORT_NAME device)
    target_include_directories(tarn_device_interface INTERFACE
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform/software/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tarn_softdev>)
    target_link_libraries(tarn_device_interface INTERFACE tarn_softdev)
    list(APPEND package_targets tarn_softdev tarn_device_interface)
    install(DIRECTORY platform/software/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarn_softdev)
else()
    target_link_libraries(tarn_device_interface INTERFACE CUDA::cudart) # the package finds the user's toolkit
endif()
install(TARGETS ${package_targets} EXPORT tarn_lapack_targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/tarn_core.h include/tarn_lapack.h include/tarn_refine.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
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

# pc_file(name description requires): found relative to where it lies, so that an installation may be moved.
function(pc_file pc_name pc_description pc_requires)
    file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    configure_file(cmake/pkgconfig.in ${PROJECT_BINARY_DIR}/${pc_name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${pc_name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
pc_file(tarn_core "Status and error info of tarn_lapack" "")
pc_file(tarn_lapack "${PROJECT_DESCRIPTION}" tarn_core)
pc_file(tarn_refine "Linear systems in double precision by factors in single precision" tarn_lapack)
