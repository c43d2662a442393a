# Installs the build tree and builds and runs the project in consumer/ with it.
#
#   cmake -D BUILD_DIR=<build tree> -D CONFIG=<build type> -D SOURCE_DIR=<consumer project>
#         -D HEADERS=<names> -D WORK_DIR=<directory> -D OPTIONS=<configure options>
#         -P consumer_test.cmake
cmake_minimum_required(VERSION 3.25)

function(run)
    execute_process(COMMAND ${ARGV}
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    message("${output}")
    if(NOT result EQUAL 0)
        list(JOIN ARGV " " command)
        message(FATAL_ERROR "This failed (${result}): ${command}")
    endif()
endfunction()

# Nothing of an earlier run may make up for a file that is no longer installed.
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --config "${CONFIG}" --prefix "${prefix}")

# Every header is public unless its name ends in _p, and no other is installed.
set(include_dir "${prefix}/include/vantrel")
file(GLOB_RECURSE installed RELATIVE "${include_dir}" "${include_dir}/*")
list(SORT installed)
list(SORT HEADERS)
if(NOT installed STREQUAL HEADERS)
    message(FATAL_ERROR
        "These headers should be installed:\n  ${HEADERS}\nand these are:\n  ${installed}")
endif()

run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build"
    "-DCMAKE_PREFIX_PATH=${prefix}" ${OPTIONS})
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")
