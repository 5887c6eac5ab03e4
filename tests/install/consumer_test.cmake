# Installs the built tree into a scratch prefix, then builds and runs a tiny host
# program against it twice: once through find_package(ixocore), once through
# pkg-config.
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
