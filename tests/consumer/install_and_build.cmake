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
