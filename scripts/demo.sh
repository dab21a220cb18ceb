#!/bin/sh
# Builds the library and shows it at work, under Wine.
#   scripts/demo.sh [TEXTFILE [SETTINGSFILE]]
set -e
root=$(cd "$(dirname "$0")/.." && pwd)
text=${1:-$root/examples/modules/text.txt}
settings=${2:-$root/examples/modules/settings.txt}
"$root"/scripts/install-tools cmake ninja-build g++-mingw-w64-x86-64-posix wine wine64 googletest

echo "Building ..."
log=$root/build/demo.log
mkdir -p "$root/build"
(cd "$root" && cmake --preset mingw && cmake --build --preset mingw --target demo) >"$log" 2>&1 ||
    { cat "$log" >&2; exit 1; }
"$root"/scripts/wine --keep-server
bin=$root/build/mingw/bin

echo
echo "== Modules that work together through the library =="
"$root"/scripts/wine "$bin"/host.exe "$text" "$settings"

echo
echo "== Inside the library: logging, with a plug-in that brings sinks =="
(cd "$bin" && "$root"/scripts/wine component.exe logging "$(mktemp -d)"/demo.log)

echo
echo "== Inside the library: the Windows registry =="
"$root"/scripts/wine "$bin"/component.exe registry

echo
echo "== Inside the library: commands =="
"$root"/scripts/wine "$bin"/component.exe commands
