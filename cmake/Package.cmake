# Installation: headers, libraries, tool, and what find_package(tarn_lapack) and pkg-config need. Its components are
# those of the packages: runtime, development, tool, and documentation where the manuals are made.
include(CMakePackageConfigHelpers)

if(NOT PROJECT_IS_TOP_LEVEL)
    # What find_package would tell a project that takes the sources in.
    set(tarn_lapack_DEVICE ${TARN_PROVIDER} CACHE INTERNAL "What tarn runs on: cuda or software")
    set(tarn_lapack_FORTRAN_SOURCE ${PROJECT_SOURCE_DIR}/fortran/tarn.f90 CACHE INTERNAL "The module for Fortran")
endif()

set(fortran_source ${CMAKE_INSTALL_DATADIR}/tarn_lapack/fortran/tarn.f90)

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
    install(DIRECTORY platform/software/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarn_softdev
            COMPONENT development)
else()
    target_link_libraries(tarn_device_interface INTERFACE CUDA::cudart) # the package finds the user's toolkit
endif()
install(TARGETS ${package_targets} EXPORT tarn_lapack_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS tarn_blas
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(FILES include/tarn_core.h include/tarn_lapack.h include/tarn_refine.h include/tarn.hpp
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES fortran/tarn.f90 DESTINATION ${CMAKE_INSTALL_DATADIR}/tarn_lapack/fortran COMPONENT development)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development PATTERN run EXCLUDE)
install(EXPORT tarn_lapack_targets FILE tarn_lapack-targets.cmake NAMESPACE tarn::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tarn_lapack COMPONENT development)
export(EXPORT tarn_lapack_targets NAMESPACE tarn:: FILE ${PROJECT_BINARY_DIR}/tarn_lapack-targets.cmake)
if(TARN_BUILD_TOOLS)
    install(TARGETS tarn COMPONENT tool)
    install(DIRECTORY data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tarn_lapack COMPONENT tool)
    install(FILES tools/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME tarn
            COMPONENT tool)
endif()

# The licences of all that is installed, in the format of Debian's packages.
file(READ LICENSE licence)
string(REGEX REPLACE "^[^\n]*\n\n[^\n]*\n\n" "" licence "${licence}") # its name and whose it is stand apart
string(STRIP "${licence}" licence)
string(REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REPLACE "\n" "\n " bsd " ${licence}")
configure_file(cmake/copyright.in ${PROJECT_BINARY_DIR}/copyright @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

configure_package_config_file(cmake/tarn_lapack-config.cmake.in ${PROJECT_BINARY_DIR}/tarn_lapack-config.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tarn_lapack
                              PATH_VARS fortran_source)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tarn_lapack-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tarn_lapack-config.cmake ${PROJECT_BINARY_DIR}/tarn_lapack-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tarn_lapack COMPONENT development)

# pc_file(name description requires libs cflags [variables]): the installation is found relative to where the file lies,
# so that it may be moved.
function(pc_file pc_name pc_description pc_requires pc_libs pc_cflags)
    file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(JOIN "\n" pc_variables ${ARGN} "")
    configure_file(cmake/pkgconfig.in ${PROJECT_BINARY_DIR}/${pc_name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${pc_name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
            COMPONENT development)
endfunction()
set(pc_libs "-L\${libdir}")
set(pc_cflags "-I\${includedir}")
pc_file(tarn_core "Status and error info of tarn_lapack" "" "${pc_libs} -ltarn_core" "${pc_cflags}")
pc_file(tarn_lapack "${PROJECT_DESCRIPTION}" tarn_core "${pc_libs} -ltarn_lapack" "${pc_cflags}"
        "fortran=\${prefix}/${fortran_source}")
pc_file(tarn_refine "Linear systems in double precision by factors in single precision" tarn_lapack
        "${pc_libs} -ltarn_refine" "${pc_cflags}")
if(TARN_PROVIDER STREQUAL software)
    set(pc_libs "${pc_libs} -ltarn_softdev")
    set(pc_cflags "-I\${includedir}/tarn_softdev")
else()
    set(pc_libs "-L${CUDAToolkit_LIBRARY_DIR} -lcudart")
    list(TRANSFORM CUDAToolkit_INCLUDE_DIRS PREPEND -I OUTPUT_VARIABLE pc_cflags)
    list(JOIN pc_cflags " " pc_cflags)
endif()
pc_file(tarn_device "Device memory for callers of tarn_lapack (${TARN_PROVIDER})" tarn_lapack "${pc_libs}"
        "${pc_cflags}")
