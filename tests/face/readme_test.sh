#!/bin/sh
# readme_test.sh README SOURCE: every line of the README's C++ stands in the source, which the build compiles.
set -eu
lines=$(sed -n '/^```cpp$/,/^```$/p' "$1" | grep -v '^```' | grep -v '^ *$')
[ -n "$lines" ] || { echo "$1 shows no C++"; exit 1; }
printf '%s\n' "$lines" | while IFS= read -r line; do
    grep -qxF -- "$line" "$2" || { echo "not in $2: $line"; exit 1; }
done
