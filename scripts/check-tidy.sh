#!/usr/bin/env bash
# Runs the checks of .clang-tidy over the given sources, or over all that a build knows. Takes minutes for all.
# usage: check-tidy.sh [--build DIR] [SOURCE...]     (default: build/release)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/release
if [[ ${1:-} == --build ]]; then
    build=$2
    shift 2
fi
[[ -f $build/compile_commands.json ]] || { echo "check-tidy: configure $build first" >&2; exit 1; }
if [[ $# -gt 0 ]]; then
    sources=("$@")
else
    mapfile -t sources < <(git ls-files -- '*.cpp' | while read -r f; do [[ -f $f ]] && echo "$f"; done)
fi
# Options that only g++ knows are in the recorded commands; the compiler has already had its say about warnings.
database=$(mktemp -d)
trap 'rm -rf "$database"' EXIT
sed 's/ -fno-gnu-unique//g' "$build/compile_commands.json" >"$database/compile_commands.json"
printf '%s\0' "${sources[@]}" |
    xargs -0 -n 1 -P 2 clang-tidy -p "$database" --quiet --extra-arg=-Wno-everything
