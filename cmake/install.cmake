# Installs the library with its headers under veldmap/, the program, a CMake package and a pkg-config file. All of it
# finds itself from where it lies, so an installation may be moved.
include(CMakePackageConfigHelpers)

set(VELDMAP_ZSH_FOLDER zsh/site-functions CACHE STRING "Where zsh looks for completions, below share")

set(VELDMAP_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/veldmap)

install(TARGETS veldmap_library EXPORT veldmapLibrary
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT veldmapLibrary NAMESPACE veldmap:: DESTINATION ${VELDMAP_PACKAGE_DIR})
if(VELDMAP_BUILD_PROGRAM)
    install(TARGETS veldmap EXPORT veldmapProgram RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(EXPORT veldmapProgram NAMESPACE veldmap:: DESTINATION ${VELDMAP_PACKAGE_DIR})
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/VeldmapGenerate.cmake DESTINATION ${VELDMAP_PACKAGE_DIR})
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/docsite/pool/ DESTINATION ${CMAKE_INSTALL_DATADIR}/veldmap/docpool)
install(FILES ${PROJECT_SOURCE_DIR}/schema/veldmap.xsd DESTINATION ${CMAKE_INSTALL_DATADIR}/veldmap)
if(VELDMAP_BUILD_PROGRAM)
    set(completions ${PROJECT_SOURCE_DIR}/completions)
    install(FILES ${completions}/veldmap.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME veldmap)
    install(FILES ${completions}/_veldmap DESTINATION ${CMAKE_INSTALL_DATADIR}/${VELDMAP_ZSH_FOLDER})
    install(FILES ${completions}/veldmap.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/site/assets/ DESTINATION ${CMAKE_INSTALL_DATADIR}/veldmap/sitepool)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/veldmapConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/veldmapConfig.cmake INSTALL_DESTINATION ${VELDMAP_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/veldmapConfigVersion.cmake
    COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT) # the program serves projects for any machine
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/veldmapConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/veldmapConfigVersion.cmake
    DESTINATION ${VELDMAP_PACKAGE_DIR})

foreach(kind LIB INCLUDE)
    string(TOLOWER ${kind}dir name)
    set(${name} ${CMAKE_INSTALL_${kind}DIR})
    if(NOT IS_ABSOLUTE ${${name}})
        string(PREPEND ${name} "\${prefix}/")
    endif()
endforeach()
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/veldmap.pc.in ${CMAKE_CURRENT_BINARY_DIR}/veldmap.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/veldmap.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
