# Tests written in Python: each "def test_..." of a class becomes a CTest test of its own.
#
# tavo_python_tests(NAME prefix FILES file... [LABELS label...] [TIMEOUT seconds]
#                   [ENVIRONMENT NAME=value...])
#
# A test that cannot run here says so (unittest's skipTest) and counts as skipped. The system's
# interpreter, because only that one has the accessibility bindings.
find_program(TAVO_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

function(tavo_python_tests)
  cmake_parse_arguments(ARG "" "NAME;TIMEOUT" "FILES;LABELS;ENVIRONMENT" ${ARGN})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARG_FILES})
  foreach(file IN LISTS ARG_FILES)
    file(STRINGS "${file}" lines REGEX "^class [A-Za-z0-9]+\\(|^    def test_[a-z0-9_]+")
    foreach(line IN LISTS lines)
      if(line MATCHES "^class ([A-Za-z0-9]+)\\(([A-Za-z0-9]+)")
        set(class "${CMAKE_MATCH_1}")
        # A class derived from another one of the file has the tests of that one too.
        set(tests_${class} ${tests_${CMAKE_MATCH_2}})
        foreach(test IN LISTS tests_${class})
          _tavo_python_test("${class}" "${test}")
        endforeach()
      elseif(line MATCHES "def test_([a-z0-9_]+)")
        list(APPEND tests_${class} "${CMAKE_MATCH_1}")
        _tavo_python_test("${class}" "${CMAKE_MATCH_1}")
      endif()
    endforeach()
  endforeach()
endfunction()

# One test, with what its caller was given.
macro(_tavo_python_test class test)
  add_test(NAME "${ARG_NAME}/${class}.${test}" COMMAND "${TAVO_PYTHON}" -W ignore -B
    "${CMAKE_SOURCE_DIR}/tools/run_python_test.py"
    "${CMAKE_CURRENT_SOURCE_DIR}/${file}" "${class}.test_${test}")
  set_tests_properties("${ARG_NAME}/${class}.${test}" PROPERTIES
    LABELS "${ARG_LABELS}" SKIP_RETURN_CODE 77 ENVIRONMENT "${ARG_ENVIRONMENT}")
  if(ARG_TIMEOUT)
    set_tests_properties("${ARG_NAME}/${class}.${test}" PROPERTIES TIMEOUT ${ARG_TIMEOUT})
  endif()
endmacro()
