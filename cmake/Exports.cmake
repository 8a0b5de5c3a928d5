# datacache_exports(TARGET): a shared library hides all but what the file exports.map beside its sources names, and needs
# nothing that it does not name.
function(datacache_exports target)
  set(map ${CMAKE_CURRENT_SOURCE_DIR}/exports.map)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map})
  if(NOT DATACACHE_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
endfunction()
