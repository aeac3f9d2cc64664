#!/usr/bin/env bash
# Reads the include lines and fails, with file and line, on an arrow that the design does not have:
#   phonomark/ sees host/ and itself;  merix/ sees host/ and itself;  host/ sees itself;
#   inside merix/ a floor sees only the floors below it; rx ge db io ed ap see neither Qt Gui nor Qt Widgets.
# usage: check-includes.sh [ROOT]
set -euo pipefail
cd "${1:-$(dirname "${BASH_SOURCE[0]}")/..}"

files=$(find phonomark host merix -name '*.h' -o -name '*.cpp' 2>/dev/null | sort)
[[ -n $files ]] || { echo "check-includes: no sources found" >&2; exit 1; }

# Header names of Qt Core's neighbours, from where they are installed.
qt=$(for d in QtGui QtWidgets QtUiTools; do ls "/usr/include/$(gcc -dumpmachine)/qt5/$d" 2>/dev/null || true; done)

printf '%s\n' "$files" | QT_HEADERS=$qt xargs awk '
BEGIN {
    n = split("rx ge db io gi ed ap ui app", floors)
    for (i = 1; i <= n; ++i) level[floors[i]] = i
    m = split(ENVIRON["QT_HEADERS"], names, "\n")
    for (i = 1; i <= m; ++i) drawn[names[i]] = 1
    split("rx ge db io ed ap", core)
    for (i in core) core_only[core[i]] = 1
}
function wrong(why) { printf "%s:%d: %s\n", FILENAME, FNR, why; bad = 1 }
/^[ \t]*#[ \t]*include[ \t]*[<"]/ {
    quoted = $0 ~ /include[ \t]*"/
    target = $0
    sub(/^[^<"]*[<"]/, "", target)
    sub(/[>"].*$/, "", target)
    split(FILENAME, from, "/")
    split(target, to, "/")
    room = to[1] == "phonomark" || to[1] == "host" || to[1] == "merix" || to[1] == "tests" || to[1] == "samples"
    if (quoted && target !~ /\// && target !~ /\.moc$/ && target !~ /^(moc_|ui_)/)
        wrong("\"" target "\" is not written from the root of the tree")
    if (room && to[1] != from[1] && to[1] != "host")
        wrong(from[1] "/ may not include " target)
    if (from[1] == "merix" && to[1] == "merix" && to[2] != from[2]) {
        if (!(from[2] in level) || !(to[2] in level)) wrong("unknown floor in " FILENAME " or " target)
        else if (level[to[2]] > level[from[2]]) wrong("floor " from[2] " lies below " to[2] ": " target)
    }
    if (from[1] == "merix" && (from[2] in core_only) && !quoted) {
        name = to[length(to)]
        if (target ~ /^Qt(Gui|Widgets|UiTools)/ || (name in drawn))
            wrong("floor " from[2] " uses Qt Core only: " target)
    }
}
END { exit bad }'
