# Tests written in Python: each class with tests becomes a CTest test, which says what came of each
# "def test_..." of it (tools/run_python_test.py), for tools/test_summary.py to count.
#
# tavo_python_tests(NAME prefix FILES file... [LABELS label...] [TIMEOUT seconds]
#                   [ENVIRONMENT NAME=value...] [COSTS class=seconds...])
#
# A class derived from another one of its file has the tests of that one too; when it repeats tests
# this way it has the label "thorough" besides. TIMEOUT is for each of a class's tests. COSTS are
# those of the classes that take long, which ctest starts first; of others the number of their tests.
# A test that cannot run here says so (unittest's skipTest) and counts as skipped. The system's
# interpreter, because only that one has the accessibility bindings.
find_program(TAVO_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

function(tavo_python_tests)
  cmake_parse_arguments(ARG "" "NAME;TIMEOUT" "FILES;LABELS;ENVIRONMENT;COSTS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARG_FILES})
  foreach(cost IN LISTS ARG_COSTS)
    string(REPLACE "=" ";" cost "${cost}")
    list(GET cost 0 class)
    list(GET cost 1 cost_${class})
  endforeach()
  foreach(file IN LISTS ARG_FILES)
    file(STRINGS "${file}" lines REGEX "^class [A-Za-z0-9]+\\(|^    def test_[a-z0-9_]+")
    set(classes "")
    foreach(line IN LISTS lines)
      if(line MATCHES "^class ([A-Za-z0-9]+)\\(([A-Za-z0-9_.]+)")
        set(class "${CMAKE_MATCH_1}")
        list(APPEND classes "${class}")
        set(repeats_${class} NO)
        set(count_${class} 0)
        if(CMAKE_MATCH_2 IN_LIST classes AND count_${CMAKE_MATCH_2} GREATER 0)
          set(repeats_${class} YES)
          set(count_${class} ${count_${CMAKE_MATCH_2}})
        endif()
      else()
        math(EXPR count_${class} "${count_${class}} + 1")
      endif()
    endforeach()
    foreach(class IN LISTS classes)
      if(count_${class} GREATER 0)
        _tavo_python_test()
      endif()
    endforeach()
  endforeach()
endfunction()

# One test, with what its caller was given and has found.
macro(_tavo_python_test)
  set(test "${ARG_NAME}/${class}")
  add_test(NAME "${test}" COMMAND "${TAVO_PYTHON}" -W ignore -B
    "${CMAKE_SOURCE_DIR}/tools/run_python_test.py"
    "${CMAKE_CURRENT_SOURCE_DIR}/${file}" "${class}" "${ARG_TIMEOUT}")
  set(labels ${ARG_LABELS})
  if(repeats_${class})
    list(APPEND labels thorough)
  endif()
  set(cost ${count_${class}})
  if(DEFINED cost_${class})
    set(cost ${cost_${class}})
  endif()
  # The runner stops a test in time; ctest stops the runner when that did not.
  math(EXPR timeout "${ARG_TIMEOUT} * (${count_${class}} + 1)")
  set_tests_properties("${test}" PROPERTIES LABELS "${labels}" SKIP_RETURN_CODE 77
    ENVIRONMENT "${ARG_ENVIRONMENT}" TIMEOUT ${timeout} COST ${cost})
endmacro()
