# cmake -DBUILD_DIR=... -DWORK_DIR=... -DCONSUMER_DIR=... -DCXX=... -DCC=...
#       [-DFC=...] [-DMPI=ON] [-DPYTHON=... -DPYTHON_PACKAGES=...] -P InstallAndConsume.cmake
# With FC, the Fortran module is consumed as well; with MPI, the MPI library
# (its host runs as one rank started alone, allowed to run as root).

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
set(hosts consumer consumer_c)
if(FC)
  set(with_fortran ON)
  list(APPEND hosts consumer_fortran)
else()
  set(with_fortran OFF)
endif()
if(MPI)
  list(APPEND hosts consumer_mpi)
  set(ENV{OMPI_ALLOW_RUN_AS_ROOT} 1)
  set(ENV{OMPI_ALLOW_RUN_AS_ROOT_CONFIRM} 1)
else()
  set(MPI OFF)
endif()

# The CMake package.
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/consumer -G ${GENERATOR}
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_C_COMPILER=${CC} -DCMAKE_Fortran_COMPILER=${FC} -DWITH_FORTRAN=${with_fortran}
    -DWITH_MPI=${MPI})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
foreach(host IN LISTS hosts)
  run(${WORK_DIR}/consumer/${host})
  message(STATUS "find_package ${host}: ${last_output}")
endforeach()

# The pkg-config files, found by their own place under the prefix.
file(GLOB_RECURSE pc_files ${prefix}/*/dovwriter.pc)
list(LENGTH pc_files pc_count)
if(NOT pc_count EQUAL 1)
  message(FATAL_ERROR "Expected one dovwriter.pc under ${prefix}, found: ${pc_files}")
endif()
get_filename_component(pc_dir ${pc_files} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
unset(ENV{LD_LIBRARY_PATH})

# consume(HOST PACKAGE COMPILER SOURCE [FLAGS...]): a host built through
# pkg-config finds the library at run time through the rpath that the
# README shows, taken from the package's libdir; no LD_LIBRARY_PATH.
function(consume host package compiler source)
  run(pkg-config --cflags --libs ${package})
  string(STRIP "${last_output}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(pkg-config --variable=libdir ${package})
  string(STRIP "${last_output}" lib_dir)
  run(${compiler} ${ARGN} ${CONSUMER_DIR}/${source} ${flags} -Wl,-rpath,${lib_dir}
      -o ${WORK_DIR}/${host}_pc)
  run(${WORK_DIR}/${host}_pc)
  message(STATUS "pkg-config ${host}: ${last_output}")
endfunction()

consume(consumer dovwriter ${CXX} consumer.cpp -std=c++17)
consume(consumer_c dovwriter ${CC} consumer.c -std=c99)
if(FC)
  consume(consumer_fortran dovwriter-fortran ${FC} consumer.f90)
endif()
if(MPI)
  consume(consumer_mpi dovwriter-mpi ${CXX} consumer_mpi.cpp -std=c++17)
endif()

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
