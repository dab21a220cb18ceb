#!/bin/sh
# Measures the library against the bare parts it is made of, and against other libraries.
#
#   scripts/bench.sh            builds and runs everything, and prints one table of ratios
#   scripts/bench.sh --check    counts instructions, each case as a ratio to its bare parts in
#                               the same run; fails if one grew by more than 3 % over
#                               benchmarks/instructions.txt
#   scripts/bench.sh --update   writes that file
#   scripts/bench.sh --growth   measures the curves over names and threads, prints their tables
#                               and draws docs/images/
set -e
cd "$(dirname "$0")/.."
native="cmake ninja-build g++ googletest"
peers="libbenchmark-dev libspdlog-dev libpoco-dev libboost-log-dev libgoogle-glog-dev"

# build PRESET TARGET...
build() {
    preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target "$@" >/dev/null
}
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT

case $1 in
--check | --update)
    # shellcheck disable=SC2086 # one word a package
    scripts/install-tools $native valgrind python3
    build host-bench Instructions
    valgrind --tool=callgrind --callgrind-out-file="$results/counts" -q \
        build/host-bench/bin/Instructions
    benchmarks/instructions.py "$1" benchmarks/instructions.txt "$results"/counts.*
    ;;
--growth)
    # shellcheck disable=SC2086
    scripts/install-tools $native $peers python3-matplotlib
    build host-bench Growth
    build/host-bench/bin/Growth --benchmark_repetitions=5 --benchmark_min_time=0.1 \
        --benchmark_enable_random_interleaving=true --benchmark_out="$results/growth.json" \
        >/dev/null 2>&1
    /usr/bin/python3 benchmarks/growth.py "$results/growth.json" docs/images
    ;;
*)
    # shellcheck disable=SC2086
    scripts/install-tools $native $peers python3 g++-mingw-w64-x86-64-posix wine wine64
    build host-bench Benchmarks
    build mingw WindowsBenchmarks
    build/host-bench/bin/Benchmarks --benchmark_repetitions=25 --benchmark_min_time=0.02 \
        --benchmark_enable_random_interleaving=true --benchmark_out="$results/times.json" \
        >/dev/null 2>&1
    scripts/wine --keep-server
    (cd build/mingw/bin && ../../../scripts/wine ./WindowsBenchmarks.exe) >"$results/lines.txt"
    benchmarks/ratios.py "$results/times.json" "$results/lines.txt"
    ;;
esac
