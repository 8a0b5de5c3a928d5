#!/bin/bash
# report_test.sh TOOL: reads pages in headless Chromium that are made of a switch whose every text tries to break out of
# them. A copy of the page gets page_test.js, which looks at it, uses it, and writes down what is wrong.
set -euo pipefail
tool=$1 here=$(cd "$(dirname "$0")" && pwd)
if ! command -v chromium > /dev/null; then
    echo "skipped: the report is read in chromium, which is not installed"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

evil="\\\"'></svg></script></style><img src=x onerror=hit()>\\u202e\\u2028\\u001b"
cat > switch.toml << TOML
switch = {wwn = "10:00:00:11:22:33:44:55", domain = 3, name = "$evil", type = "</title>$evil"}
ports = {count = 3, transceiver = {serial = "<img onerror=x>"}, port = [{numbers = [1], state = "Offline"}]}
chassis = {power_supplies = ["Good", "Bad"], fans = 1}
accounts = {users = ["secretadmin", "secret$evil"]}
snmp = {read_community = "secretcommunity", description = "$evil"}
lsdb = [{domain = 3, links = [{local_port = "$evil", neighbor = "10$evil"}]}]
fabric.switch = [{domain = 10, wwn = "10:00:00:11:22:33:50:01", name = "$evil", ports = 2}]
[zoning]
active = "prodZZ"
alias = [{name = "dbZZ", members = ["10000011223344AA"]}]
zone = [{name = "oneZZ", members = ["0309", "dbZZ"]}, {name = "two", members = ["010800"]}]
zoneset = [{name = "prodZZ", zones = ["oneZZ"]}]
limits = {zonesets = 4, zones = 9, members = 99, zones_per_zoneset = 9, members_per_zone = 9, aliases = 9, members_per_alias = 9}
TOML
cat > scenario.toml << TOML
step = [
{do = "raise", code = 16, text = "first $evil"},
{do = "power_supply", after = "100ms", index = 1, state = "NotInstalled"},
{do = "account_add", after = "100ms", name = "secretguest"},
{do = "login_failed", after = "1200ms", user = "secretguest"},
{do = "raise", code = 16, after = "100ms", text = "last secretguest did it"},
]
TOML
# Whoever starts empties the log of all, and cannot write the one of another user: where that is allowed, this one has a
# /tmp of its own, which holds nothing but the folder that the tool may be in.
own_tmp='
mkdir -p own
mount -t tmpfs none own
path=$(readlink -f "$1")
below=${path#/tmp/}
if [ "$below" != "$path" ]; then
    mkdir "own/${below%%/*}"
    mount --rbind "/tmp/${below%%/*}" "own/${below%%/*}"
fi
mount --rbind own /tmp
exec "$@"'
report() {
    local own=()
    if unshare -rm mount -t tmpfs none "$work" 2> /dev/null; then own=(unshare -rm sh -ec "$own_tmp" -); fi
    "${own[@]}" "$tool" report "$@" 2> /dev/null
}
report live.html --json live.json --switch switch.toml --scenario scenario.toml --record calls.jsonl
# The simulated switch takes no such names in its zoning; a recording does.
json="\\\\\"'></svg></script></style><img src=x onerror=hit()>\\\\u00e2\\\\u0080\\\\u00ae\\\\u00e2\\\\u0080\\\\u00a8\\\\u001b"
sed -i "s|ZZ|$json|g" calls.jsonl
report replay.html --json replay.json --replay calls.jsonl
report open.html --unmasked --switch switch.toml

result=0
fail() {
    echo "$*"
    result=1
}
browse() { chromium --headless --no-sandbox --disable-gpu --user-data-dir="$work/profile" --virtual-time-budget=5000 --dump-dom "file://$work/$1" 2> /dev/null; }
for page in live replay; do
    # Nothing holds back what breaks out of this copy: it goes without its policy.
    {
        sed 's/<meta http-equiv="Content-Security-Policy"[^>]*>/<script>let hits = 0; function hit() { ++hits; }<\/script>/' $page.html
        printf '<pre id="findings"></pre><script>%s</script>\n' "$(cat "$here/page_test.js")"
    } > copy.html
    browse copy.html > copy.dom || fail "the browser failed"
    grep -q '<pre id="findings">all is well</pre>' copy.dom ||
        fail "$page.html: $(sed -n '/<pre id="findings">/,/<\/pre>/p' copy.dom)"
    ! grep -o '.\{60\}secret[acg].\{20\}' $page.json $page.html || fail "that is a secret"
done
# With its policy the page's own script works, which shows the search.
grep -q 'default-src &#39;none&#39;' live.html && browse live.html | grep '<p class="search">' > /dev/null ||
    fail "the script does not run under its policy"
[ "$(grep -o 'secretadmin\|secretcommunity' open.html | sort -u | wc -l)" = 2 ] || fail "--unmasked shows no secrets"

# A replay tells the times of the recording, and what the host was told in its order.
seen() { grep -oE '"time":"[^"]*","kind":"(pass|switch event)"|"class":"[^"]*"' "$1"; }
diff <(seen live.json) <(seen replay.json) || fail "the replay tells another story"
exit $result
