# Run by cpack between laying out the files of packages and packing them: adds to each package its copyright and change
# log, and compresses the manual.

function(compress file)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
    file(CHMOD ${file}.gz PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

# The text of the change log that the packaging system reads. What is new in the program is in CHANGELOG.md.
function(write_debian_changelog file)
    string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
    set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
    file(WRITE ${file} "veldmap (${version}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; changelog.gz tells what is new.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
    compress(${file})
endfunction()

foreach(component program library development)
    set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component})
    if(NOT IS_DIRECTORY ${root})
        continue()
    endif()
    string(TOUPPER ${component} upper)
    set(doc ${root}${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    file(MAKE_DIRECTORY ${doc})
    file(CHMOD ${doc} PERMISSIONS ${CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
    file(COPY_FILE ${CPACK_VELDMAP_SOURCE}/LICENSE ${doc}/copyright)
    file(CHMOD ${doc}/copyright PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    file(COPY_FILE ${CPACK_VELDMAP_SOURCE}/CHANGELOG.md ${doc}/changelog)
    compress(${doc}/changelog)
    write_debian_changelog(${doc}/changelog.Debian)
    file(GLOB manuals ${root}${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/man1/*.1)
    foreach(manual IN LISTS manuals)
        compress(${manual})
    endforeach()
endforeach()
