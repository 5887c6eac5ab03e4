# Installs the built tree into a scratch prefix, then builds and runs a tiny host
# program against it twice: once through find_package(ixocore), once through
# pkg-config. Then the installed tree is moved elsewhere and its programs are run from
# there with no library path set, as a new user would.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
    RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "install failed")
endif()

execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
        -DCMAKE_PREFIX_PATH=${prefix} RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "consumer configure failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "consumer build failed")
endif()
execute_process(COMMAND ${WORK_DIR}/build/consumer RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "consumer (CMake package) exited with ${rc}")
endif()

file(GLOB_RECURSE pc_files ${prefix}/*/ixocore.pc)
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND pkg-config --cflags --libs ixocore OUTPUT_VARIABLE flags
    OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "pkg-config does not know ixocore")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
get_filename_component(libdir ${pc_dir} DIRECTORY)
execute_process(COMMAND c++ ${SOURCE_DIR}/main.cpp ${flags} -Wl,-rpath,${libdir}
        -o ${WORK_DIR}/consumer_pc RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "consumer (pkg-config) build failed")
endif()
execute_process(COMMAND ${WORK_DIR}/consumer_pc RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "consumer (pkg-config) exited with ${rc}")
endif()

# The installed programs find their library and media relative to themselves.
set(moved ${WORK_DIR}/moved)
file(RENAME ${prefix} ${moved})
file(GLOB renderers ${moved}/bin/ixo-render)
if(renderers)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH
            ${moved}/bin/ixo-render ${EXAMPLES_DIR}/demo.json -o ${WORK_DIR}/demo.png
        RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(rc)
        message(FATAL_ERROR "installed ixo-render exited with ${rc}: ${out}${err}")
    endif()
    file(READ ${WORK_DIR}/demo.png head LIMIT 8 HEX)
    if(NOT head STREQUAL "89504e470d0a1a0a")
        message(FATAL_ERROR "installed ixo-render wrote no PNG")
    endif()
endif()
file(GLOB viewers ${moved}/bin/ixo-viewer)
if(viewers)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH
            ${moved}/bin/ixo-viewer --help
        RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(rc)
        message(FATAL_ERROR "installed ixo-viewer --help exited with ${rc}: ${out}${err}")
    endif()
endif()
