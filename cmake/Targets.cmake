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
