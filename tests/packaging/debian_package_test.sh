#!/usr/bin/env bash
# Builds the Debian package, unpacks it elsewhere and runs the program from there: it must find its library, the
# voice-note module, the resource module and the line types inside the package.
# usage: debian_package_test.sh BUILD
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
wrong() {
    echo "$*"
    failures=1
}

cd "$work"
cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/packages" >cpack.log 2>&1 || { cat cpack.log && exit 1; }
package=$(find packages -maxdepth 1 -name 'merix_*.deb')
[[ -f $package ]] || { echo "no package was made" && exit 1; }
dpkg-deb -x "$package" root

for file in bin/merix lib/merix/libmerix.so lib/merix/libMrxPhonomark.mrx lib/merix/MrxPhonomarkRes.dll \
    lib/merix/merix.lin share/applications/merix.desktop share/mime/packages/merix.xml \
    share/icons/hicolor/scalable/apps/merix.svg share/icons/hicolor/48x48/apps/merix.png share/doc/merix/copyright; do
    [[ -f root/usr/$file ]] || wrong "missing in the package: usr/$file"
done
depends=$(dpkg-deb -f "$package" Depends)
for library in libqt5widgets5 libasound2 libsqlite3-0 libzstd1; do
    [[ $depends == *"$library"* ]] || wrong "the package does not depend on $library: $depends"
done

export HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_DATA_HOME=$work/home/data XDG_CACHE_HOME=$work/home/cache
mkdir -p "$HOME"
version=$(dpkg-deb -f "$package" Version)
said=$(env -u LD_LIBRARY_PATH root/usr/bin/merix --version)
[[ $said == *"$version"* ]] || wrong "merix --version says: $said"
loaded=$(LD_DEBUG=libs root/usr/bin/merix --version 2>&1 | grep -o 'calling init: .*/libmerix.so' || true)
[[ $loaded == *"$work"* ]] || wrong "the library was not taken from the package: $loaded"

# The function is the module's, and its texts come from the resource module.
printf '(PhonomarkShow)\n@expect 1\nPHONOMARK\n@expect Specify the point of the note\n@key Escape\n' >script
root/usr/bin/merix --headless --script script "$work/root/usr/share/doc/merix/examples/plan.dxf" >log 2>&1 ||
    wrong "the script in the unpacked package failed: $(cat log)"
exit "$failures"
