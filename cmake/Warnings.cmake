# Warnings for all code of the project; errors where DATACACHE_WERROR is on, as it is in CI.
function(datacache_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wcast-qual
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast>
    $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-Wduplicated-cond -Wlogical-op>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<BOOL:${DATACACHE_WERROR}>:-Werror>)
endfunction()
