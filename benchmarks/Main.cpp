#include "Bench.h"

int main([[maybe_unused]] int argc, [[maybe_unused]] char** argv) {
#ifdef QUEND_GROWTH
    bench::addGrowth();
#else
    bench::addObjectRegistry();
    bench::addPropertyStore();
    bench::addRandomSource();
    bench::addLogging();
#ifndef QUEND_COUNT_INSTRUCTIONS
    bench::addPeers();
#endif
#endif
#ifndef QUEND_COUNT_INSTRUCTIONS
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
#endif
}
