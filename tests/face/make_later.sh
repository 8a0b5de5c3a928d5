#!/bin/sh
# make_later.sh SOURCE TARGET: copies the library's folders and gives each record that hosts see by reference one field
# more, and an event a field of a new kind, as a later version would. Files that stay the same keep their time, so that
# nothing is built twice.
set -eu
mark='// New fields are added here, at the end.'
cd "$1"
target=$2
find common vexlib switchlib zoning datacache -name '*.h' -o -name '*.cpp' | while read -r file; do
    mkdir -p "$target/$(dirname "$file")"
    sed -e "s|$mark|unsigned long long laterField = 0x1A7E1A7E1A7E1A7E; $mark|" \
        -e '/enum class EventFieldKind/s| };|, Seconds };|' \
        -e 's|FIELD(grown);|& EventFieldMaker::show(visit, "took", EventFieldKind::Seconds, "9");|' \
        -e 's|switch (_kind) {|& case EventFieldKind::Seconds: return static_cast<const char*>(_value);|' \
        "$file" > "$target/$file.new"
    if cmp -s "$target/$file.new" "$target/$file"; then rm "$target/$file.new"; else mv "$target/$file.new" "$target/$file"; fi
done
