# Installs the build at BUILD_DIR into a fresh folder, then builds and runs the outside projects
# against it. FIND_BY is cmake or pkg-config.
cmake_minimum_required(VERSION 3.25)

set(work ${BUILD_DIR}/outside-${FIND_BY})
file(REMOVE_RECURSE ${work})

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${work}/prefix)
foreach(file include/velorncore10.h include/velorn.h include/velorn.hpp bin/velorn
        share/man/man1/velorn.1)
    if(NOT EXISTS ${work}/prefix/${file})
        message(FATAL_ERROR "not installed: ${file}")
    endif()
endforeach()
run(${work}/prefix/bin/velorn --version)

if(FIND_BY STREQUAL "pkg-config")
    file(GLOB_RECURSE description ${work}/prefix/velorncore10.pc)
    get_filename_component(folder ${description} DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} ${folder})
    set(options -DUSE_PKG_CONFIG=ON)
else()
    set(options -DCMAKE_PREFIX_PATH=${work}/prefix)
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/build ${options})
run(${CMAKE_COMMAND} --build ${work}/build)
file(GLOB_RECURSE library ${work}/prefix/libvelorncore10.so)
get_filename_component(folder ${library} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${folder})
foreach(host outside outsideVelorn outsideVelornCpp)
    run(${work}/build/${host})
endforeach()

# The library's file has its version, and hosts refer to it by the SONAME.
file(GLOB versions RELATIVE ${folder} ${folder}/libvelorn.so*)
list(SORT versions)
if(NOT versions STREQUAL "libvelorn.so;libvelorn.so.1;libvelorn.so.1.1.0")
    message(FATAL_ERROR "unexpected files of libvelorn: ${versions}")
endif()
