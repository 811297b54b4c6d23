# Packages by cpack: a .deb for each component, and a .tar.gz that holds all and may be unpacked anywhere. Debian's
# layout (libraries in a folder of the architecture) comes with the preset `package`, whose prefix is /usr.
set(TARN_PACKAGE_CONTACT "the tarn authors <tarn@example.org>" CACHE STRING "Who maintains the packages")
mark_as_advanced(TARN_PACKAGE_CONTACT)

# A machine has the packages of one device.
if(TARN_PROVIDER STREQUAL cuda)
    set(variant -cuda)
    set(other "")
    set(device_remark "This build runs on NVIDIA GPUs by CUDA.")
else()
    set(variant "")
    set(other -cuda)
    set(device_remark "This build runs on a small software device on the CPU.")
endif()
set(soname ${PROJECT_VERSION_MAJOR})

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME tarn)
set(CPACK_PACKAGE_VENDOR "the tarn authors")
set(CPACK_PACKAGE_CONTACT ${TARN_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_FILE_NAME tarn${variant}-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime development tool)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY} ${CUDAToolkit_LIBRARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)

# package(component name section summary text)
function(package component name section summary text)
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_COMPONENT_${key}_DISPLAY_NAME "${summary}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${text}\n${device_remark}" PARENT_SCOPE)
    string(REGEX REPLACE "^(libtarn-lapack|tarn)(-cuda)?" "\\1${other}" twin ${name})
    if(variant)
        set(CPACK_DEBIAN_${key}_PACKAGE_PROVIDES "${twin} (= ${PROJECT_VERSION})" PARENT_SCOPE)
    endif()
    set(CPACK_DEBIAN_${key}_PACKAGE_CONFLICTS ${twin} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_REPLACES ${twin} PARENT_SCOPE)
endfunction()

string(JOIN "\n" about "tarn_lapack is dense linear algebra behind LAPACK-shaped C calls, for arrays in"
                       "host and in device memory: LU, QR, least squares and SVD in single precision,"
                       "BLAS 2 and 3 in all four element types.")
package(runtime libtarn-lapack${variant}${soname} libs "dense linear algebra on a GPU (libraries)"
        "${about}")
package(development libtarn-lapack${variant}-dev libdevel "dense linear algebra on a GPU (development files)"
        "${about}\n.\nHeaders for C and C++, the Fortran module, files for CMake and pkg-config,\n"
        "examples and man pages.")
package(tool tarn${variant} math "dense linear algebra on a GPU (command-line tool)"
        "${about}\n.\nThe tool solves systems from Matrix Market files and measures the library.")
if(TARN_BUILD_DOCS)
    list(APPEND CPACK_COMPONENTS_ALL documentation)
    package(documentation libtarn-lapack${variant}-doc doc "dense linear algebra on a GPU (manuals)"
            "${about}\n.\nThe Programmer's Guide and the Reference Manual, for a browser.")
    set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS ${CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME})
endif()

# What only Debian asks for is put beside the files that are installed.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/complete.cmake)
set(CPACK_TARN_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_TARN_PROVIDER ${TARN_PROVIDER})
set(CPACK_TARN_COPYRIGHT ${PROJECT_BINARY_DIR}/copyright)
set(CPACK_TARN_DOCDIR ${CMAKE_INSTALL_FULL_DOCDIR})
set(CPACK_TARN_MANDIR ${CMAKE_INSTALL_FULL_MANDIR})
include(CPack)
