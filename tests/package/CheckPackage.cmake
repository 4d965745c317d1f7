# Installs the built tree into a folder of its own, then configures, builds and runs a host that finds the package there.
#   cmake -D BUILD=<build tree> -D WORK=<folder, made anew> -D LIBDIR=<lib> -D GENERATOR=<name> -D COMPILER=<path> -P ...
cmake_minimum_required(VERSION 3.22)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        string(REPLACE ";" " " command "${ARGN}")
        message(FATAL_ERROR "${command}\nended with ${status}:\n${output}")
    endif()
endfunction()

function(expect file)
    if(NOT EXISTS ${prefix}/${file})
        message(FATAL_ERROR "not installed: ${file}")
    endif()
endfunction()

set(prefix ${WORK}/prefix)
set(moved ${WORK}/moved)
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
set(bundle ${LIBDIR}/linklist.bundle/Contents)
expect(include/linklist/PluginSettingsInterface.h)
expect(${bundle}/Info.plist)
expect(${bundle}/Resources/en.lproj/PluginSettingsDelegate.nib)
expect(${bundle}/Resources/html/index.html)
file(GLOB headers RELATIVE ${prefix} ${prefix}/include/linklist/*)
if(NOT headers STREQUAL "include/linklist/PluginSettingsInterface.h")
    message(FATAL_ERROR "more than the one public header is installed: ${headers}")
endif()

# An installed tree may be moved before it is used.
file(RENAME ${prefix} ${moved})
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${moved})
run(${CMAKE_COMMAND} --build ${WORK}/build)
file(GLOB module ${moved}/${bundle}/Linux/linklist.so ${moved}/${bundle}/MacOS/linklist)
run(${WORK}/build/host ${module})
