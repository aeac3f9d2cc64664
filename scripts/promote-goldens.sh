#!/usr/bin/env bash
# Takes over what the golden cases gave in the last test run as what they have to give from now on. Look at the
# pictures first; the change is reviewed like any other.
# usage: promote-goldens.sh BUILD [CASE...]   (all cases that were run when none is named)
set -euo pipefail
cases=$(cd "$(dirname "${BASH_SOURCE[0]}")/../tests/golden" && pwd)
results=$(cd "$1" && pwd)/golden
shift
(($#)) || mapfile -t names < <(cd "$results" && ls)
for name in "${@:-${names[@]}}"; do
    [[ -d $results/$name ]] || { printf 'Nothing came out of a case %s\n' "$name" >&2; exit 1; }
    mkdir -p "$cases/$name"
    for file in picture.png saved.dxf; do
        rm -f "$cases/$name/$file"
        [[ ! -f $results/$name/$file ]] || cp "$results/$name/$file" "$cases/$name/$file"
    done
    printf 'promoted %s\n' "$name"
done
