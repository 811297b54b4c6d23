# Run by cpack before it writes packages: completes the folders of .deb packages with what Debian's policy asks for.
if(NOT CPACK_GENERATOR STREQUAL DEB)
    return()
endif()
find_program(gzip gzip REQUIRED)

# gzipped(source target)
function(gzipped source target)
    execute_process(COMMAND ${gzip} -9nc ${source} OUTPUT_FILE ${target} COMMAND_ERROR_IS_FATAL ANY)
    file(CHMOD ${target} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(READ ${CPACK_TARN_SOURCE}/LICENSE licence)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} key)
    set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
    set(root ${CPACK_TEMPORARY_DIRECTORY}/${component})

    set(doc ${root}/usr/share/doc/${package})
    file(MAKE_DIRECTORY ${doc})
    file(WRITE ${doc}/copyright "tarn\n\n${licence}")
    gzipped(${CPACK_TARN_SOURCE}/CHANGELOG.md ${doc}/changelog.gz)
    set(changelog ${CPACK_TEMPORARY_DIRECTORY}/changelog)
    file(WRITE ${changelog}
         "tarn (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
         "  * Version ${CPACK_PACKAGE_VERSION}; changelog.gz says what changed.\n\n"
         " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    gzipped(${changelog} ${doc}/changelog.Debian.gz)
    if(component STREQUAL runtime)
        set(overrides ${root}/usr/share/lintian/overrides)
        file(MAKE_DIRECTORY ${overrides})
        file(WRITE ${overrides}/${package}
             "# The libraries are versioned and released as one.\n"
             "${package}: package-name-doesnt-match-sonames *\n"
             "# Its functions read and write a variable of the thread, and call nothing of the C library.\n"
             "${package}: library-not-linked-against-libc *libtarn_core.so.*\n")
    endif()

    # The linker's own folders hold the libraries: no search path, but for the place of a CUDA toolkit.
    if(CPACK_TARN_PROVIDER STREQUAL cuda)
        continue()
    endif()
    file(GLOB_RECURSE files ${root}/usr/bin/* ${root}/usr/lib/*.so.*)
    foreach(file IN LISTS files)
        if(NOT IS_SYMLINK ${file})
            file(RPATH_REMOVE FILE ${file})
        endif()
    endforeach()
endforeach()
