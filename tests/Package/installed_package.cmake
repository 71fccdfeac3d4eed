# Installs the build to a prefix of its own, and builds and runs the consumer from there: by the CMake package, and by
# pkg-config where there is one.

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${PREFIX} ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} --config ${CONFIG})

run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK} -G ${GENERATOR} -DCMAKE_BUILD_TYPE=Debug -DCMAKE_PREFIX_PATH=${PREFIX}
    -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${FLAGS} -DVERSION=${VERSION})
run(${CMAKE_COMMAND} --build ${WORK} --config Debug)
run(${CMAKE_CTEST_COMMAND} --test-dir ${WORK} --build-config Debug --output-on-failure)

find_program(pkgConfig NAMES pkg-config pkgconf)
if(pkgConfig)
    set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
    execute_process(
        COMMAND ${pkgConfig} --cflags --libs "vexa = ${VERSION}"
        OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(options UNIX_COMMAND "${options}")
    run(${COMPILER} -std=c++11 -Wall -Wextra -Wpedantic -Werror ${FLAGS} ${CONSUMER}/main.cpp -o ${WORK}/by_pkg_config
        ${options})
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${PREFIX}/${LIBDIR} ${WORK}/by_pkg_config)
endif()
