# Fails unless the C tests call every function that the C interface
# declares: those with an identifier argument from the bad-identifier test,
# the others from any C test. The list comes from the header itself, after
# the preprocessor has expanded its element-type families.
#
# cmake -DCC=... -DHEADER=... -DNM=... -DBAD_IDENTIFIER_TEST=exe
#       "-DOTHER_TESTS=exe;exe" -P CheckCalls.cmake

execute_process(COMMAND ${CC} -E -P -x c ${HEADER}
  RESULT_VARIABLE result OUTPUT_VARIABLE declarations ERROR_VARIABLE error)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Cannot preprocess ${HEADER}: ${error}")
endif()

function(called_functions executables out)
  set(names)
  foreach(executable IN LISTS executables)
    execute_process(COMMAND ${NM} -D --undefined-only ${executable}
      RESULT_VARIABLE result OUTPUT_VARIABLE symbols)
    if(NOT result EQUAL 0)
      message(FATAL_ERROR "Cannot list the symbols of ${executable}")
    endif()
    string(REGEX MATCHALL "dov_[a-z0-9_]+" found "${symbols}")
    list(APPEND names ${found})
  endforeach()
  set(${out} ${names} PARENT_SCOPE)
endfunction()

called_functions("${BAD_IDENTIFIER_TEST}" bad_identifier_calls)
called_functions("${BAD_IDENTIFIER_TEST};${OTHER_TESTS}" all_calls)

string(REGEX MATCHALL "dov_[a-z0-9_]+ *\\([^)]*\\)" functions "${declarations}")
list(LENGTH functions declared)
set(missing)
foreach(function IN LISTS functions)
  string(REGEX MATCH "^dov_[a-z0-9_]+" name "${function}")
  if(function MATCHES "dov_id [a-z]")
    list(FIND bad_identifier_calls ${name} at)
    set(where "the bad-identifier test")
  else()
    list(FIND all_calls ${name} at)
    set(where "any C test")
  endif()
  if(at EQUAL -1)
    list(APPEND missing "${name} (not called by ${where})")
  endif()
endforeach()
if(declared LESS 100 OR missing)
  list(JOIN missing "\n  " missing)
  message(FATAL_ERROR "${declared} functions declared; left out:\n  ${missing}")
endif()
message(STATUS "All ${declared} functions of the C interface are called")
