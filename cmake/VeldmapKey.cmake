set(VELDMAP_KEY_FILE "" CACHE FILEPATH
    "Key of encrypted descriptions: 32 bytes, or 64 hexadecimal digits. Without it they keep nothing secret")

# Sets source to the C++ file that defines the key. What is read from the key file stays in a process of its own and in
# that source, which its owner alone may read; a trace of the configuration does not show it. Every build looks at the
# key again: the time of the file does not tell whether it is another one.
function(veldmap_key_source source)
    set(generated ${CMAKE_CURRENT_BINARY_DIR}/key.cpp)
    if(VELDMAP_KEY_FILE STREQUAL "")
        file(REMOVE ${generated})
        file(REMOVE_RECURSE ${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/veldmap_key.dir) # made of an earlier key
        message(STATUS "No VELDMAP_KEY_FILE: encrypted descriptions use the development key, which everybody has")
        set(${source} container/development_key.cpp PARENT_SCOPE)
        return()
    endif()
    get_filename_component(key_file "${VELDMAP_KEY_FILE}" ABSOLUTE BASE_DIR ${PROJECT_SOURCE_DIR})
    set(write_source ${CMAKE_COMMAND} "-DKEY_FILE=${key_file}" "-DOUTPUT=${generated}"
        -P ${PROJECT_SOURCE_DIR}/cmake/write_key_source.cmake)
    execute_process(COMMAND ${write_source} RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "VELDMAP_KEY_FILE is no key: ${key_file} must be a readable file of 32 bytes, or of 64 "
                            "hexadecimal digits with or without a line feed behind them")
    endif()
    add_custom_target(veldmap_key_source COMMAND ${write_source} BYPRODUCTS ${generated} COMMENT "Reading the key" VERBATIM)
    set(${source} ${generated} PARENT_SCOPE)
endfunction()
