#!/bin/sh
# Builds everything and runs all tests under Wine. Arguments go to CTest: scripts/test.sh -R Name
set -e
cd "$(dirname "$0")/.."
scripts/install-tools cmake ninja-build g++-mingw-w64-x86-64-posix wine wine64 googletest
cmake --preset mingw >/dev/null
cmake --build --preset mingw
scripts/wine --keep-server
ctest --preset mingw "$@"
