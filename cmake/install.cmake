# Installs the library with its headers under veldmap/, the program, a CMake package and a pkg-config file. All of it
# finds itself from where it lies, so an installation may be moved. What has no component here belongs to "development";
# packages are made of components.
include(CMakePackageConfigHelpers)

set(VELDMAP_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/veldmap)

install(TARGETS veldmap_library EXPORT veldmapLibrary
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(EXPORT veldmapLibrary NAMESPACE veldmap:: DESTINATION ${VELDMAP_PACKAGE_DIR})
if(VELDMAP_BUILD_PROGRAM)
    install(TARGETS veldmap EXPORT veldmapProgram RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
    install(EXPORT veldmapProgram NAMESPACE veldmap:: DESTINATION ${VELDMAP_PACKAGE_DIR})
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/VeldmapGenerate.cmake DESTINATION ${VELDMAP_PACKAGE_DIR})
endif()
include(${CMAKE_CURRENT_LIST_DIR}/install_program.cmake)

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
