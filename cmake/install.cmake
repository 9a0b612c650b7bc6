# Installs the library with its headers under veldmap/, the program, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(VELDMAP_ZSH_FOLDER zsh/site-functions CACHE STRING "Where zsh looks for completions, below share")

set(VELDMAP_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/veldmap)

set(installed_targets veldmap_library)
if(VELDMAP_BUILD_PROGRAM)
    list(APPEND installed_targets veldmap)
endif()
install(TARGETS ${installed_targets} EXPORT veldmapTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/docsite/pool/ DESTINATION ${CMAKE_INSTALL_DATADIR}/veldmap/docpool)
install(FILES ${PROJECT_SOURCE_DIR}/schema/veldmap.xsd DESTINATION ${CMAKE_INSTALL_DATADIR}/veldmap)
if(VELDMAP_BUILD_PROGRAM)
    set(completions ${PROJECT_SOURCE_DIR}/completions)
    install(FILES ${completions}/veldmap.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME veldmap)
    install(FILES ${completions}/_veldmap DESTINATION ${CMAKE_INSTALL_DATADIR}/${VELDMAP_ZSH_FOLDER})
    install(FILES ${completions}/veldmap.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/site/assets/ DESTINATION ${CMAKE_INSTALL_DATADIR}/veldmap/sitepool)
install(EXPORT veldmapTargets NAMESPACE veldmap:: DESTINATION ${VELDMAP_PACKAGE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/veldmapConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/veldmapConfig.cmake INSTALL_DESTINATION ${VELDMAP_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/veldmapConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/veldmapConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/veldmapConfigVersion.cmake
    ${CMAKE_CURRENT_LIST_DIR}/VeldmapGenerate.cmake
    DESTINATION ${VELDMAP_PACKAGE_DIR})

configure_file(${CMAKE_CURRENT_LIST_DIR}/veldmap.pc.in ${CMAKE_CURRENT_BINARY_DIR}/veldmap.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/veldmap.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
