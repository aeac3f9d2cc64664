#!/usr/bin/env bash
# Lists the sources of the host and the module that have no test beside them: for merix/db/x.cpp that is
# tests/merix/db/x_test.cpp. With --strict it fails if there is one.
# usage: list-untested.sh [--strict]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
untested=0
while read -r source; do
    if [[ ! -f tests/${source%.cpp}_test.cpp ]]; then
        echo "$source"
        untested=1
    fi
done < <(find merix phonomark tools -name '*.cpp' ! -path '*/main/*' | sort)
[[ ${1:-} != --strict || $untested -eq 0 ]]
