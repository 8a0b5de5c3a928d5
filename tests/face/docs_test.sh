#!/bin/bash
# docs_test.sh SOURCES BIN [EMULATOR...]: what README, docs and --help tell a reader to type works as it is written there,
# and prints what they say it prints. A command is a line of an indented block that begins with "$ ", whose output follows
# ("..." stands for any lines), or every line of a block that begins with a program of ours. Set-up and builds are left to
# the continuous integration, which must run them.
set -euo pipefail
sources=$1 bin=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# A tree as a reader has it: the examples, a recording, and the tools where the build puts them.
mkdir -p build/dev/bin blocks
ln -s "$sources/examples" examples
ln -s "$sources/tests/recording/data/x86.jsonl" switch.jsonl
for tool in datacache-host datacache-mkswitch; do
    printf '#!/bin/sh\nexec %s "%s/%s" "$@"\n' "$*" "$bin" "$tool" > "build/dev/bin/$tool"
done
if ! command -v dot > /dev/null; then  # of the package graphviz; without it, its input must at least be a graph
    printf "#!/bin/sh\nsed -n '1{/^graph fabric {\$/!q1};\$p' | grep -qx '}'\n" > build/dev/bin/dot
fi
chmod +x build/dev/bin/*
export PATH=$work/build/dev/bin:$PATH

# Each block becomes a script, and what a "$ " command prints a file beside it.
"$work/build/dev/bin/datacache-host" --help | sed -n 's/^  datacache-host/\n    &/p' | sed 's/^      /    /' > help.md
awk '
    FNR == 1 { block = "" }
    !/^    / { block = ""; next }
    { sub(/^    /, "") }
    /^\$ / || block == "" {
        base = FILENAME; gsub(/.*\//, "", base)
        block = /^(\$ |\.\/|cd |script\/|cmake |datacache-)/ ? "blocks/" base "-" FNR : "none"
        shown = /^\$ /; command = 1
    }
    block == "none" { next }
    command { sub(/^\$ /, ""); print > block }
    !command { print > (block ".out") }
    { command = !shown || command && /\\$/ }
' "$sources/README.md" "$sources"/docs/*.md help.md

as_shown() {  # as_shown EXPECTED < ACTUAL; the seconds that a lock has left pass as they like
    sed 's/(lock: [0-9]* s/(lock: 90 s/' | awk '
        BEGIN { i = n = bad = any = 0 }
        NR == FNR { want[n++] = $0; next }
        want[i] ~ /^ *\.\.\.$/ && i < n { any = 1; i++ }
        i < n && $0 == want[i] { i++; any = 0; next }
        !any { exit bad = 1 }
        END { exit bad || i < n }' "$1" -
}

try() {
    local block=$1
    if grep -qE '^(script/|cmake )' "$block"; then
        for step in $(grep -oE '^script/[a-z]+|preset [a-z]+' "$block" | sed 's/^preset //'); do
            grep -q "$step" "$sources/.ci/run" || { echo "$block: CI does not run $step"; return 1; }
        done
        return
    fi
    bash -eo pipefail "$block" > "$block.log" 2>&1 || { echo "$block failed:"; cat "$block" "$block.log"; return 1; }
    [ ! -e "$block.out" ] || as_shown "$block.out" < "$block.log" ||
        { echo "$block does not print what is shown:"; cat "$block" "$block.log"; return 1; }
}

running=()
for block in blocks/*; do
    case $block in *.out | *.log) continue ;; esac
    try "$block" &
    running+=($!)
done
[ ${#running[@]} -ge 12 ] || { echo "only ${#running[@]} blocks found"; exit 1; }
failed=0
for process in "${running[@]}"; do wait "$process" || failed=1; done

# What the README shows of a host is what is built.
lines=$(sed -n '/^```cpp$/,/^```$/p' "$sources/README.md" | grep -vE '^(```.*| *)$')
while IFS= read -r line; do
    grep -qxF -- "$line" "$sources/examples/minimal_host.cpp" || { echo "not in minimal_host.cpp: $line"; failed=1; }
done <<< "$lines"
exit $failed
