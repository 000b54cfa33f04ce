# What every target of our own has in common. Libraries that we only use are never touched by it.
find_package(Threads REQUIRED)

function(tavo_target name)
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_compile_options(${name} PRIVATE
    -Wall -Wextra -Werror -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wmissing-declarations -Wsuggest-override)
  target_link_libraries(${name} PUBLIC Threads::Threads)
endfunction()

# One source file a header, which includes that header alone: a header that forgets an include
# fails the build.
function(tavo_check_headers name)
  set(sources)
  foreach(header IN LISTS ARGN)
    string(REPLACE "/" "_" stem "${header}")
    set(source "${CMAKE_CURRENT_BINARY_DIR}/alone/${name}/${stem}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "#include \"${header}\"\n" @ONLY)
    list(APPEND sources "${source}")
  endforeach()
  add_library(${name}_headers OBJECT ${sources})
  target_link_libraries(${name}_headers PRIVATE ${name})
  tavo_target(${name}_headers)
endfunction()

# tavo_room(NAME USES room... [LIBRARIES library...] FILES file...)
#
# A folder as a static library. A header beside a source of its name is included first by that
# source (tools/check_includes.py), which proves that it compiles alone; the others are compiled
# alone here.
function(tavo_room name)
  cmake_parse_arguments(ARG "" "" "USES;LIBRARIES;FILES" ${ARGN})
  set(sources ${ARG_FILES})
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  set(alone)
  file(RELATIVE_PATH folder "${CMAKE_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
  foreach(file IN LISTS ARG_FILES)
    string(REGEX REPLACE "\\.h$" ".cpp" source "${file}")
    if(file MATCHES "\\.h$" AND NOT source IN_LIST sources)
      list(APPEND alone "${folder}/${file}")
    endif()
  endforeach()
  add_library(${name} STATIC ${sources})
  tavo_target(${name})
  target_compile_definitions(${name} PUBLIC QT_NO_KEYWORDS)
  target_link_libraries(${name} PUBLIC ${ARG_USES} ${ARG_LIBRARIES})
  if(alone)
    tavo_check_headers(${name} ${alone})
  endif()
endfunction()
