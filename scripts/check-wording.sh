#!/usr/bin/env bash
# The tree speaks of the program alone: it names no planning document, no folder of one person's machine, and
# leaves no reminder of unfinished work. Fails with file and line.
# usage: check-wording.sh [ROOT]   (ROOT must be a git work tree)
set -euo pipefail
cd "${1:-$(dirname "${BASH_SOURCE[0]}")/..}"
git rev-parse --is-inside-work-tree >/dev/null
words='\b[Ss]pecification\b|\b[Tt]he spec\b|\bspec\.md\b|\bParts? [1-6]\.[1-9]\b|(^|[^[:alnum:]_}.-])/(work|home|root)/|/tmp/brief|\bFIX''ME\b|\bTO''DO\b'
paths=$(git ls-files | grep -iE '(^|/)spec(ification)?(\.|/|$)' || true)
lines=$(git grep -nIE "$words" -- . ':!scripts/check-wording.sh' || true)
[[ -z $paths$lines ]] || { printf '%s\n' "$paths" "$lines" | grep -v '^$'; exit 1; }
