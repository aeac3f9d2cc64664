#!/usr/bin/env bash
# Compiles each header of the contract by itself: one that leans on what its includer included fails here.
# usage: check-headers.sh [COMPILER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
compiler=${1:-c++}
mapfile -t headers < <(find host -name '*.h' | sort)
[[ ${#headers[@]} -gt 0 ]] || { echo "check-headers: no headers found" >&2; exit 1; }
read -ra qt <<<"$(pkg-config --cflags Qt5Widgets)"

check() {
    local header=$1
    shift
    printf '#include "%s"\n' "$header" |
        "$@" -std=c++20 -fPIC -I. -Wall -Wextra -Werror -fsyntax-only -x c++ - || {
        echo "$header does not compile alone" >&2
        return 1
    }
}
export -f check
printf '%s\0' "${headers[@]}" |
    xargs -0 -P 2 -I{} bash -c 'check "$@"' check {} "$compiler" "${qt[@]/#-I/-isystem}" -DQT_NO_KEYWORDS
