# Generates the C and assembly headers of a description while a project is built.
#
#   veldmap_generate(TARGET CHIP soc.xml [SOFT firmware.xml] [OUTPUT DIR] [DEPENDS FILE...])
#
# TARGET becomes an interface library: linking it puts the directory of each generated header on the include path. The
# headers are made anew when one of the descriptions, or of the files under DEPENDS, changes. OUTPUT is a directory,
# TARGET-headers in the build tree by default.
function(veldmap_generate target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "CHIP;SOFT;OUTPUT" "DEPENDS")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "veldmap_generate: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
    endif()
    if(NOT arg_CHIP AND NOT arg_SOFT)
        message(FATAL_ERROR "veldmap_generate: CHIP or SOFT must name a description")
    endif()
    if(NOT arg_OUTPUT)
        set(arg_OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${target}-headers)
    endif()

    set(roots)
    set(descriptions)
    set(directories)
    foreach(kind CHIP SOFT)
        if(arg_${kind})
            get_filename_component(root ${arg_${kind}} ABSOLUTE)
            get_filename_component(base ${root} DIRECTORY)
            string(TOLOWER ${kind} word)
            list(APPEND roots --${word} ${root})
            set(output ${arg_OUTPUT})
            if(arg_CHIP AND arg_SOFT)
                set(output ${arg_OUTPUT}/${word})
            endif()
            # Headers repeat the directories of the descriptions and name each other without them.
            file(GLOB_RECURSE files CONFIGURE_DEPENDS ${base}/*.xml ${base}/*.xmd)
            foreach(file IN LISTS files)
                file(RELATIVE_PATH relative ${base} ${file})
                get_filename_component(directory ${output}/${relative} DIRECTORY)
                list(APPEND directories ${directory})
            endforeach()
            list(APPEND descriptions ${root} ${files})
        endif()
    endforeach()
    list(REMOVE_DUPLICATES directories)
    list(REMOVE_DUPLICATES descriptions)

    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.stamp)
    add_custom_command(OUTPUT ${stamp}
        COMMAND veldmap::veldmap headers ${roots} -o ${arg_OUTPUT}
        COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
        DEPENDS ${descriptions} ${arg_DEPENDS} veldmap::veldmap
        COMMENT "Generating the headers of ${target}"
        VERBATIM)
    add_custom_target(${target}-generate DEPENDS ${stamp})
    add_library(${target} INTERFACE)
    add_dependencies(${target} ${target}-generate)
    target_include_directories(${target} INTERFACE ${directories})
endfunction()
