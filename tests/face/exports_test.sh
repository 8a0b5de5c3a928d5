#!/bin/sh
# exports_test.sh NM LIBRARY LIST: compares the library's exported symbols, demangled, with the kept list, and checks
# that it imports nothing but the runtime, the management library and uptime. "exports_test.sh NM LIBRARY" prints the
# exports, which is how the kept list is made.
set -eu
export LC_ALL=C
nm=$1
library=$2

exports() { "$nm" -DC --defined-only "$library" | sed -E 's/^[0-9a-f]+ +[A-Za-z] //; s/\[abi:cxx11\]//' | sort -u; }
if [ $# -lt 3 ]; then
    exports
    exit 0
fi

if ! exports | diff -u "$3" -; then
    echo "The exports differ from $3. If that is meant, write the list anew:"
    echo "  $0 $nm $library > $3"
    exit 1
fi

foreign=$("$nm" -D --undefined-only "$library" | sed -E 's/^ *[A-Za-z] //' |
    grep -vE '@(GLIBC|GLIBCXX|CXXABI|GCC)_|^(vex_[A-Za-z]+|uptime|__gmon_start__|_ITM_[A-Za-z]+)$' || true)
if [ -n "$foreign" ]; then
    echo "The library needs symbols beyond the runtime, vex_* and uptime:"
    echo "$foreign"
    exit 1
fi
