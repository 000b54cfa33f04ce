# What every target of our own has in common. Libraries that we only use are never touched by it.
find_package(Threads REQUIRED)

# Precompiled headers, one set for each kind of source:
#
#   tavo_precompile(NAME [LIBRARIES library...] HEADERS header...)    makes a set
#   tavo_use_precompiled(target NAME)                                 takes it
#
# They shorten builds for tests. The presets release and core do without, and so prove that every
# file includes what it needs. A set is refused by GCC, and its headers are read as usual, where it
# was made with a macro that the source does not have.
option(TAVO_PRECOMPILE "Use precompiled headers" OFF)
function(tavo_precompile name)
  if(TAVO_PRECOMPILE)
    cmake_parse_arguments(ARG "" "" "LIBRARIES;DEFINITIONS;HEADERS" ${ARGN})
    set(source "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "static_assert(true);\n" @ONLY)
    add_library(${name} STATIC "${source}")
    target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
    target_link_libraries(${name} PRIVATE Threads::Threads ${ARG_LIBRARIES})
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
  endif()
endfunction()
function(tavo_use_precompiled target name)
  if(TAVO_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${name})
    set_target_properties(${target} PROPERTIES PCH_WARN_INVALID OFF)
  endif()
endfunction()

set(TAVO_STANDARD_HEADERS
  <algorithm> <array> <atomic> <chrono> <cstdint> <functional> <map> <memory> <mutex> <optional>
  <string> <string_view> <thread> <unordered_map> <utility> <variant> <vector>)
set(TAVO_QT_HEADERS
  <QAccessible> <QApplication> <QKeyEvent> <QMenu> <QMouseEvent> <QPainter> <QPainterPath> <QPixmap>
  <QScrollArea> <QString> <QTimer> <QWidget>)

function(tavo_target name)
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}")
  # The checks that a sanitizer adds make GCC warn of what cannot happen.
  if(NOT TAVO_SANITIZE)
    target_compile_options(${name} PRIVATE
      -Wall -Wextra -Werror -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
      -Wmissing-declarations -Wsuggest-override)
  endif()
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

# tavo_room(NAME USES room... [LIBRARIES library...] [PRECOMPILED set] FILES file...)
#
# A folder as a static library. A header beside a source of its name is included first by that
# source (tools/check_includes.py), which proves that it compiles alone; the others are compiled
# alone here.
function(tavo_room name)
  cmake_parse_arguments(ARG "" "PRECOMPILED" "USES;LIBRARIES;FILES" ${ARGN})
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
  if(NOT ARG_PRECOMPILED)
    set(ARG_PRECOMPILED tavo_standard_headers)
  endif()
  tavo_use_precompiled(${name} ${ARG_PRECOMPILED})
  if(alone)
    tavo_check_headers(${name} ${alone})
  endif()
endfunction()
