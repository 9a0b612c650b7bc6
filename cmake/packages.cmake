# Debian packages, one for each component of the installation: "cpack" in a build directory of the preset "package" makes
# them, and scripts/package checks them too.
set(VELDMAP_CONTACT "Veldmap developers <veldmap@lists.example.org>" CACHE STRING "Who answers for packages: NAME <ADDRESS>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Veldmap)
set(CPACK_PACKAGE_CONTACT ${VELDMAP_CONTACT})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own below

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Copyright, change log and manual in the form that the system wants.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_files.cmake)
set(CPACK_VELDMAP_SOURCE ${PROJECT_SOURCE_DIR})

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME veldmap)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "register descriptions to headers, packages and documentation
Veldmap turns one XML description of a chip's registers and memory map, or of
software data structures, into C and assembly headers, VHDL packages, a
documentation site, and answers about single registers.
.
This package has the program, with a schema for XML editors.")

set(library_package libveldmap${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "register descriptions as a tree - shared library
Veldmap loads one XML description of a chip's registers and memory map, or of
software data structures, into a typed tree, and generates from it.
.
This package has the library that programs need to run.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libveldmap-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS qt6-base-dev)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "register descriptions as a tree - development files
Veldmap loads one XML description of a chip's registers and memory map, or of
software data structures, into a typed tree, and generates from it.
.
This package has the headers, the CMake package and the pkg-config file with
which programs are built that use the library, and veldmap_generate() for
CMake, which makes headers of descriptions in the course of a build.")

include(CPack)
cpack_add_component(library)
cpack_add_component(program DEPENDS library)
cpack_add_component(development DEPENDS library program)
