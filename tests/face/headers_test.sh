#!/bin/bash
# headers_test.sh COMPILER SOURCES HEADERS...: what the public headers, and the headers that these include, put into a host.
# Every macro begins with DC_, VEX_ or DATACACHE_; every function, variable and class with functions of its own is exported;
# and with a language older than C++17 the first thing that the compiler says is which one is needed.
set -euo pipefail
compiler=$1 sources=$2
shift 2
flags=(-x c++ "-I$sources")
result=0
fail() {
    echo "$*"
    result=1
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for header in "$@"; do printf '#include "%s"\n' "$header"; done > "$work/all.cpp"
"$compiler" "${flags[@]}" -std=c++17 -E -dD "$work/all.cpp" > "$work/all.ii"

# Only what stands in files of ours, as the line markers say; of the imported library's only the macros.
macros=$(awk -v ours="$sources/" '
    /^# [0-9]+ "/ { mine = index($0, " \"" ours); next }
    mine && /^#define / { sub(/\(.*/, "", $2); print $2 }' "$work/all.ii" | sort -u)
[ "$(wc -l <<< "$macros")" -gt 20 ] || fail "hardly any macros were found"
! grep -vE '^(DC|VEX|DATACACHE)_' <<< "$macros" || fail "these macros have no prefix of ours"

# The tree's format puts what stands in a namespace, and nothing else, at the begin of a line. What is only declared must be
# exported: by itself, or as a member of a class that is.
hidden=$(awk -v ours="$sources/" '
    function begins(depth) { return depth == 0 ? /^[A-Za-z\[]/ : depth == 1 && /^    [A-Za-z~\[]/ }
    /^# [0-9]+ "/ { mine = index($0, " \"" ours) && !/vexlib.h"/; next }
    !mine || /^ *$/ || /^(extern "C" |namespace .*)\{$/ { next }
    /^}/ { depth = 0; statement = ""; next }
    statement == "" && !begins(depth) { next }
    { statement = statement " " $0 }
    /[;{}:]$/ {
        ++statements
        public = depth == 0 || !exported
        declared = statement ~ /;$/ && (statement ~ /\(/ || statement ~ /^ extern /)
        harmless = statement ~ /visibility|\{|= (default|delete);|LockToken|^ *(using|typedef|static_assert|friend|extern template)/
        if (public && declared && !harmless) print statement
        if (depth == 0 && /\{$/) {
            depth = statement ~ /^ (template .*)?(class|struct|union) / ? 1 : 2
            exported = statement ~ /visibility/
        }
        statement = ""
    }
    END { if (statements < 100) print "hardly any declarations were found" }' "$work/all.ii")
[ -z "$hidden" ] || fail "these are public and not exported: $hidden"

for header in "$@"; do
    [ "$header" != vexlib/vexlib.h ] || continue  # anybody may provide that library
    printf '#include "%s"\n' "$header" > "$work/old.cpp"
    said=$("$compiler" "${flags[@]}" -std=c++14 -Wfatal-errors -fsyntax-only "$work/old.cpp" 2>&1 || true)
    grep -q 'error.* needs C++17' <<< "$said" || fail "$header does not say in C++14 that it needs C++17: $said"
done
exit $result
