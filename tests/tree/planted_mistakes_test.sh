#!/usr/bin/env bash
# Each check must pass on a small clean tree and fail, naming file and line, once a mistake is planted in it.
# usage: planted_mistakes_test.sh SCRIPTS
set -euo pipefail
scripts=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
cd "$tree"
failures=0

plant() { # FILE LINE
    mkdir -p "$(dirname "$1")"
    printf '%s\n' "$2" >>"$1"
}
clean_tree() {
    rm -rf "${tree:?}"/* "$tree/.git"
    plant host/db/object.h '#pragma once'
    plant merix/rx/registry.h '#include <QString>'
    plant merix/db/object.cpp '#include "merix/rx/registry.h"'
    plant merix/ui/window.cpp '#include <QWidget>'
    plant phonomark/app/entry.cpp '#include "host/db/object.h"'
    git init -q . && git add -A
}
expect() { # clean | FILE:LINE, then the check
    local expected=$1 output status=0
    shift
    git add -A
    output=$("$@" "$tree" 2>&1) || status=$?
    if [[ $expected == clean ]]; then
        [[ $status -eq 0 && -z $output ]] && return
    else
        [[ $status -ne 0 && $output == *"$expected"* ]] && return
    fi
    echo "expected $expected of $(basename "$1"), got status $status: $output"
    failures=1
}

mistake() { # CHECK FILE LINE
    clean_tree
    expect clean "$scripts/$1"
    plant "$2" "$3"
    expect "$2:$(wc -l <"$2")" "$scripts/$1"
}

mistake check-includes.sh phonomark/app/entry.cpp '#include "merix/db/object.h"'
mistake check-includes.sh merix/db/object.cpp '#include "phonomark/app/entry.h"'
mistake check-includes.sh host/db/object.h '#include "merix/db/object.h"'
mistake check-includes.sh host/db/object.h '#include "phonomark/app/entry.h"'
mistake check-includes.sh merix/rx/registry.h '#include "merix/db/object.h"'
mistake check-includes.sh merix/db/object.cpp '#include <QPainter>'
mistake check-includes.sh merix/db/object.cpp '#include <QtWidgets/QWidget>'
mistake check-includes.sh merix/db/object.cpp '#include "object.h"'
mistake check-includes.sh merix/db/object.cpp '#include "tests/support/process.h"'
mistake check-wording.sh merix/db/object.cpp "// as the sp""ec says"
mistake check-wording.sh merix/db/object.cpp "// see Pa""rt 2.1"
mistake check-wording.sh merix/db/object.cpp "// TO""DO later"
mistake check-wording.sh merix/db/object.cpp "// read from /ho""me/somebody"
exit "$failures"
