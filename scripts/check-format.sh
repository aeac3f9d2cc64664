#!/usr/bin/env bash
# Fails where a tracked C++ source is not laid out as .clang-format says. With --fix it lays it out.
# usage: check-format.sh [--fix]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run --Werror)
[[ ${1:-} != --fix ]] || mode=(-i)
mapfile -t sources < <(git ls-files -- '*.cpp' '*.h' | while read -r f; do [[ -f $f ]] && echo "$f"; done)
[[ ${#sources[@]} -gt 0 ]] || { echo "check-format: no sources found" >&2; exit 1; }
printf '%s\0' "${sources[@]}" | xargs -0 -n 40 clang-format --style=file "${mode[@]}"
