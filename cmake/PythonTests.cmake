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
    cmake_path(GET file STEM stem)
    string(REGEX REPLACE "^test_" "" subject "${stem}")
    file(STRINGS "${file}" lines REGEX "^class [A-Za-z]+|^    def test_[a-z0-9_]+")
    set(class "")
    foreach(line IN LISTS lines)
      if(line MATCHES "^class ([A-Za-z]+)")
        set(class "${CMAKE_MATCH_1}")
      elseif(line MATCHES "def test_([a-z0-9_]+)")
        set(test "${ARG_NAME}/${subject}.${CMAKE_MATCH_1}")
        add_test(NAME "${test}" COMMAND "${TAVO_PYTHON}" -W ignore -B
          "${CMAKE_SOURCE_DIR}/tools/run_python_test.py"
          "${CMAKE_CURRENT_SOURCE_DIR}/${file}" "${class}.test_${CMAKE_MATCH_1}")
        set_tests_properties("${test}" PROPERTIES
          LABELS "${ARG_LABELS}" SKIP_RETURN_CODE 77 ENVIRONMENT "${ARG_ENVIRONMENT}")
        if(ARG_TIMEOUT)
          set_tests_properties("${test}" PROPERTIES TIMEOUT ${ARG_TIMEOUT})
        endif()
      endif()
    endforeach()
  endforeach()
endfunction()
