#!/usr/bin/env bash
# Installs the Debian packages of the given list files that are missing. Where none is missing it installs
# nothing and needs no network.
#
# usage: install-packages.sh LIST...
set -euo pipefail

missing=()
for list in "$@"; do
    while read -r package _; do
        case "$package" in '' | '#'*) continue ;; esac
        state=$(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null || true)
        [[ $state == ?i* ]] || missing+=("$package")
    done <"$list"
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

if [[ $(id -u) -eq 0 ]]; then
    as_root=()
elif command -v sudo >/dev/null; then
    as_root=(sudo)
else
    echo "These Debian packages are missing, and there is no sudo to install them: ${missing[*]}" >&2
    exit 1
fi
echo "Installing Debian packages: ${missing[*]}" >&2
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 -q)
"${apt[@]}" update >&2
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" >&2
