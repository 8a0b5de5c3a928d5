# ccache where it is there, unless another launcher is chosen. It is told to look through precompiled headers: what it
# leaves out of its look then are macros from the command line that the header does not use, and __TIME__.
find_program(DATACACHE_CCACHE ccache)
mark_as_advanced(DATACACHE_CCACHE)
if(NOT DATACACHE_CCACHE OR CMAKE_CXX_COMPILER_LAUNCHER)
  return()
endif()
foreach(_language C CXX)
  set(CMAKE_${_language}_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${DATACACHE_CCACHE})
endforeach()
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  add_compile_options(-Xclang -fno-pch-timestamp)
else()
  add_compile_options(-fpch-preprocess)
endif()
