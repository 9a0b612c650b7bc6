set(VELDMAP_KEY_FILE "" CACHE FILEPATH
    "Key of encrypted descriptions: 32 bytes, or 64 hexadecimal digits. Without it they keep nothing secret")

# Sets source to the C++ file that defines the key. What is read from the key file stays in a process of its own and in
# that source, which its owner alone may read; a trace of the configuration does not show it.
function(veldmap_key_source source)
    set(generated ${CMAKE_CURRENT_BINARY_DIR}/key.cpp)
    if(VELDMAP_KEY_FILE STREQUAL "")
        file(REMOVE ${generated})
        message(STATUS "No VELDMAP_KEY_FILE: encrypted descriptions use the development key, which everybody has")
        set(${source} loading/development_key.cpp PARENT_SCOPE)
        return()
    endif()
    get_filename_component(key_file "${VELDMAP_KEY_FILE}" ABSOLUTE BASE_DIR ${PROJECT_SOURCE_DIR})
    execute_process(COMMAND ${CMAKE_COMMAND} "-DKEY_FILE=${key_file}" "-DOUTPUT=${generated}"
                    -P ${PROJECT_SOURCE_DIR}/cmake/write_key_source.cmake
                    RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "VELDMAP_KEY_FILE is no key: ${key_file} must be a readable file of 32 bytes, or of 64 "
                            "hexadecimal digits with or without a line feed behind them")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${key_file})
    set(${source} ${generated} PARENT_SCOPE)
endfunction()
