# Installs the build in BUILD_DIR below WORK_DIR, and builds and runs the project of this folder against it.
function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix)
if(NOT EXISTS ${WORK_DIR}/prefix/share/veldmap/include/veldmap/types.h)
    message(FATAL_ERROR "veldmap/types.h is not installed")
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK_DIR}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix -DINSTALLED_HEADERS=${WORK_DIR}/prefix/include -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer ${CMAKE_CURRENT_LIST_DIR}/led.xml)
run(${WORK_DIR}/build/registers ${CMAKE_CURRENT_LIST_DIR}/led.xml sim)
execute_process(COMMAND ${WORK_DIR}/build/registers ${CMAKE_CURRENT_LIST_DIR}/led.xml none RESULT_VARIABLE result
                OUTPUT_QUIET)
if(result EQUAL 0)
    message(FATAL_ERROR "registers has set a field of no target")
endif()

# That program stands in docs/library.md as it is here.
file(READ ${CMAKE_CURRENT_LIST_DIR}/registers.cpp program)
file(READ ${CMAKE_CURRENT_LIST_DIR}/../../docs/library.md page)
string(FIND "${page}" "```cpp\n${program}```\n" place)
if(place EQUAL -1)
    message(FATAL_ERROR "docs/library.md has another program than tests/consumer/registers.cpp")
endif()
