// A block of 32 bytes, made and freed. Bare: the C runtime's functions, called by their address.
#include <Quend/Framework/MemoryManager.h>

#include <cstdlib>

#include "Bench.h"

namespace bench {
namespace {

const Group memory(Mode::table, {1}, [](std::size_t /*size*/) {
    using namespace Quend::Framework::Management;
    addCase("allocate/ours", [] {
        void* const block = MemoryManager::allocate(32);
        MemoryManager::deallocate(block);
        return block;
    });
    addCase("allocate/bare", byAddress([allocate = &std::malloc, deallocate = &std::free] {
                void* const block = allocate(32);
                deallocate(block);
                return block;
            }));
});

}  // namespace
}  // namespace bench
