#!/usr/bin/env bash
# What the commands at the root of the tree say before they build anything.
# usage: commands_test.sh ROOT
set -euo pipefail
root=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

expect() { # STATUS TEXT COMMAND...
    local status=0 output expected=$1 text=$2
    shift 2
    output=$("$@" 2>&1) || status=$?
    if [[ $status -ne $expected || $output != *"$text"* ]]; then
        echo "expected status $expected and \"$text\" of $*, got status $status: $output"
        failures=1
    fi
}

expect 0 "usage: ./run" "$root/run" --help
expect 0 "usage: ./test" "$root/test" --help
expect 1 "try ./run --demo" env -u DISPLAY -u WAYLAND_DISPLAY "$root/run"
expect 1 "unknown option --fly" "$root/run" --fly
expect 1 "--out needs a folder" "$root/run" --demo --out
expect 1 "--out belongs to --demo" "$root/run" --out "$work"

# Every package of the lists carries a reason, and none stands in both.
for list in packages packages-test; do
    grep -vE '^(#|$)' "$root/scripts/$list.txt" | awk 'NF < 2 { print "no reason given: " $0; bad = 1 } END { exit bad }' ||
        failures=1
done
twice=$(cat "$root"/scripts/packages*.txt | awk '!/^(#|$)/ { print $1 }' | sort | uniq -d)
[[ -z $twice ]] || { echo "listed twice: $twice" && failures=1; }

# With nothing missing nothing is installed; with something missing it says what before it installs.
mkdir "$work/bin"
printf '#!/bin/sh\necho "called: $*"\n' >"$work/bin/apt-get"
printf '#!/bin/sh\nexec "$@"\n' >"$work/bin/sudo"
chmod +x "$work/bin/apt-get" "$work/bin/sudo"
printf '# comment\n\nbash  a shell\n' >"$work/there.txt"
printf 'no-such-package-here  for this test\n' >"$work/missing.txt"
install=(env "PATH=$work/bin:$PATH" "$root/scripts/install-packages.sh")
output=$("${install[@]}" "$work/there.txt" 2>&1)
[[ -z $output ]] || { echo "installed something needlessly: $output" && failures=1; }
output=$("${install[@]}" "$work/there.txt" "$work/missing.txt" 2>&1)
[[ $output == "Installing Debian packages: no-such-package-here"*"update"*"install -y "*"no-such-package-here" ]] ||
    { echo "unexpected: $output" && failures=1; }
exit "$failures"
