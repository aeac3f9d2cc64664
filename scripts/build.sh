#!/usr/bin/env bash
# Configures a preset where needed and builds it. Quiet when all goes well, the whole log when it does not.
#
# usage: build.sh PRESET [TARGET...]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
preset=$1
shift
cd "$root"
mkdir -p "build/$preset"
log=build/$preset/build.log
run_logged() {
    "$@" >"$log" 2>&1 || { cat "$log" >&2 && echo "Building $preset failed." >&2 && exit 1; }
}

# ThreadSanitizer, and AddressSanitizer on some kernels, cannot place their shadow memory when the kernel
# randomises addresses widely. The build runs freshly built programs, so it needs the fixed layout as well.
fixed=()
if [[ $preset == [at]san ]] && setarch "$(uname -m)" -R true 2>/dev/null; then
    fixed=(setarch "$(uname -m)" -R)
fi

[[ -f build/$preset/build.ninja ]] || echo "Configuring build/$preset" >&2
run_logged cmake --preset "$preset"
targets=()
[[ $# -eq 0 ]] || targets=(--target "$@")
echo "Building build/$preset${*:+ ($*)}" >&2
run_logged "${fixed[@]}" cmake --build --preset "$preset" "${targets[@]}"
