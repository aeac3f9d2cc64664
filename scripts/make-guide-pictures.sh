#!/usr/bin/env bash
# Makes the pictures of the user's guide anew: the tests that work by hand on a screen of their own take them on the
# way. Look at each before it is committed.
# usage: make-guide-pictures.sh [BUILD FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:-build/release}
cmake --build "$build" --target real_sessions_test >&2
mkdir -p docs/pictures
MERIX_PICTURES=$PWD/docs/pictures MERIX_RESOURCE_PATH=$build/bin "$build/tests/real_sessions_test" \
    --gtest_filter='RealSessions.*' >&2
ls -l docs/pictures
