// Bare: rand() behind a plain std::mutex, out of line.
#include <Quend/Framework/Framework.h>

#include <cstdlib>
#include <mutex>

#include "Bench.h"

namespace bench {

void addRandomSource() {
    addCase("randomNumber/ours", [] { return Quend::Framework::Framework::randomNumber(); });
    static std::mutex mutex;
    addCase("randomNumber/bare", []() BENCH_OUT_OF_LINE {
        const std::lock_guard lock(mutex);
        return std::rand();
    });
}

}  // namespace bench
