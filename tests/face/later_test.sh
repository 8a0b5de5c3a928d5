#!/bin/sh
# later_test.sh HOST FOLDER SWITCH: HOST says the same with the library that it was linked with and with the later one in
# FOLDER.
set -eu
cd "$(mktemp -d)"
trap 'rm -rf "$PWD"' EXIT
"$1" "$3" > now
LD_LIBRARY_PATH=$2 ldd "$1" | grep -qF "libdatacache.so.1 => $2/" || { echo "The host does not find $2."; exit 1; }
LD_LIBRARY_PATH=$2 "$1" "$3" > later
diff -u now later
