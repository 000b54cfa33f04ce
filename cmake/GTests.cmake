# Tests written with GoogleTest: each program becomes one CTest test, which runs all its tests in one
# process and says what came of each (tools/run_gtest.py), for tools/test_summary.py to count.
#
# tavo_gtests(NAME name PROGRAM target [PARTS number] [THOROUGH pattern] [LABELS label...]
#             [ARGUMENTS argument...])
#
# PARTS splits a long program into tests that run at the same time. THOROUGH adds a test with the
# label "thorough": those whose names the pattern finds, with all of their cases and rounds.
find_program(TAVO_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

function(tavo_gtests)
  cmake_parse_arguments(ARG "" "NAME;PROGRAM;PARTS;THOROUGH" "LABELS;ARGUMENTS" ${ARGN})
  if(NOT ARG_PARTS)
    set(ARG_PARTS 1)
  endif()
  foreach(part RANGE 1 ${ARG_PARTS})
    set(test "${ARG_NAME}")
    if(ARG_PARTS GREATER 1)
      set(test "${ARG_NAME}:${part}")
    endif()
    add_test(NAME "${test}" COMMAND "${TAVO_PYTHON}" -B "${CMAKE_SOURCE_DIR}/tools/run_gtest.py"
      "--part=${part}/${ARG_PARTS}" "$<TARGET_FILE:${ARG_PROGRAM}>" ${ARG_ARGUMENTS})
    # The runner ends a test that takes too long; long programs begin first.
    set_tests_properties("${test}" PROPERTIES LABELS "${ARG_LABELS}" SKIP_RETURN_CODE 77
      TIMEOUT 1500 COST ${ARG_PARTS})
  endforeach()
  if(ARG_THOROUGH)
    add_test(NAME "${ARG_NAME}:thorough" COMMAND "${TAVO_PYTHON}" -B
      "${CMAKE_SOURCE_DIR}/tools/run_gtest.py" --seconds=900 "$<TARGET_FILE:${ARG_PROGRAM}>")
    set_tests_properties("${ARG_NAME}:thorough" PROPERTIES LABELS thorough SKIP_RETURN_CODE 77
      TIMEOUT 1500 COST 9
      ENVIRONMENT "TAVO_ONLY=${ARG_THOROUGH};TAVO_THOROUGH=1;TAVO_KILL_ROUNDS=1000")
  endif()
endfunction()
