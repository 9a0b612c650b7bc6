# Installs what a user of the program has beside it: the fixed files of sites, the schema for editors, the manual, and
# completion of command lines.
set(VELDMAP_ZSH_FOLDER zsh/site-functions CACHE STRING "Where zsh looks for completions, below share")

set(share ${CMAKE_INSTALL_DATADIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/docsite/pool/ DESTINATION ${share}/veldmap/docpool COMPONENT program)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/site/assets/ DESTINATION ${share}/veldmap/sitepool COMPONENT program)
install(FILES ${PROJECT_SOURCE_DIR}/src/headers/types/veldmap/types.h DESTINATION ${share}/veldmap/include/veldmap
        COMPONENT program)
install(FILES ${PROJECT_SOURCE_DIR}/schema/veldmap.xsd ${PROJECT_SOURCE_DIR}/schema/map.schema.json
        DESTINATION ${share}/veldmap COMPONENT program)
if(VELDMAP_BUILD_PROGRAM)
    configure_file(${PROJECT_SOURCE_DIR}/docs/veldmap.1 ${CMAKE_CURRENT_BINARY_DIR}/veldmap.1 @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/veldmap.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
    set(completions ${PROJECT_SOURCE_DIR}/completions)
    install(FILES ${completions}/veldmap.bash DESTINATION ${share}/bash-completion/completions RENAME veldmap
            COMPONENT program)
    install(FILES ${completions}/_veldmap DESTINATION ${share}/${VELDMAP_ZSH_FOLDER} COMPONENT program)
    install(FILES ${completions}/veldmap.fish DESTINATION ${share}/fish/vendor_completions.d COMPONENT program)
endif()
