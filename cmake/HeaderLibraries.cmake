# The header-only libraries of the tools around the library (switch files, command lines, JSON). Debian installs them
# in /usr/include, which a cross compiler must not search; so they are reached through links in the build folder.
set(_header_libraries ${CMAKE_BINARY_DIR}/header-libraries)
file(MAKE_DIRECTORY ${_header_libraries})
foreach(_folder toml++ CLI nlohmann)
  if(NOT EXISTS /usr/include/${_folder})
    message(FATAL_ERROR "/usr/include/${_folder} is missing: run script/setup")
  endif()
  file(CREATE_LINK /usr/include/${_folder} ${_header_libraries}/${_folder} SYMBOLIC)
endforeach()
add_library(header_libraries INTERFACE)
target_include_directories(header_libraries SYSTEM INTERFACE ${_header_libraries})
# One source file compiles toml++; the others only declare it.
target_compile_definitions(header_libraries INTERFACE TOML_HEADER_ONLY=0)
