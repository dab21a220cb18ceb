// Bare: rand() behind a plain std::mutex.
#include <Quend/Framework/Framework.h>

#include <cstdlib>
#include <memory>
#include <mutex>

#include "Bench.h"

namespace bench {
namespace {

const Group randomSource(Mode::table, {1}, [](std::size_t /*size*/) {
    addCase("randomNumber/ours", [] { return Quend::Framework::Framework::randomNumber(); });
    const auto mutex = std::make_shared<std::mutex>();
    addCase("randomNumber/bare", byAddress([mutex] {
                const std::lock_guard lock(*mutex);
                return std::rand();
            }));
});

}  // namespace
}  // namespace bench
