# cmake -DBUILD_DIR=... -DWORK_DIR=... -DCONSUMER_DIR=... -DCXX=... [-DPYTHON=... -DPYTHON_PACKAGES=...]
#       -P InstallAndConsume.cmake

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "Failed (${result}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# The CMake package.
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/consumer -G ${GENERATOR}
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer)
message(STATUS "find_package consumer: ${last_output}")

# The pkg-config file, found by its own place under the prefix.
file(GLOB_RECURSE pc_files ${prefix}/*/dovwriter.pc)
list(LENGTH pc_files pc_count)
if(NOT pc_count EQUAL 1)
  message(FATAL_ERROR "Expected one dovwriter.pc under ${prefix}, found: ${pc_files}")
endif()
get_filename_component(pc_dir ${pc_files} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
run(pkg-config --cflags --libs dovwriter)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
# At run time the host finds the library through the rpath that the README
# shows, taken from the pkg-config file; no LD_LIBRARY_PATH.
run(pkg-config --variable=libdir dovwriter)
string(STRIP "${last_output}" lib_dir)
unset(ENV{LD_LIBRARY_PATH})
run(${CXX} -std=c++17 ${CONSUMER_DIR}/consumer.cpp ${flags} -Wl,-rpath,${lib_dir}
    -o ${WORK_DIR}/consumer_pc)
run(${WORK_DIR}/consumer_pc)
message(STATUS "pkg-config consumer: ${last_output}")

# The installed tool finds the installed library by itself.
if(EXISTS ${prefix}/bin/dovinspect)
  run(${prefix}/bin/dovinspect --version)
  message(STATUS "installed dovinspect: ${last_output}")
endif()

# The Python package, where it was built: found under the prefix, with the
# installed library beside it.
if(PYTHON)
  set(ENV{PYTHONPATH} ${prefix}/${PYTHON_PACKAGES})
  unset(ENV{LD_LIBRARY_PATH})
  run(${PYTHON} -c "import dovwriter\nprint(dovwriter.__file__)\ndovwriter.Scene('installed')")
  message(STATUS "Python package: ${last_output}")
endif()
