// A program without a runtime, for linkers that know nothing of GCC's: it shows that the import
// library serves them.
#include <Quend/Framework/MemoryManager.h>

namespace memory = Quend::Framework::Management::MemoryManager;

extern "C" int start() {
    void* const block = memory::allocate(16);
    memory::deallocate(block);
    return block != nullptr ? 0 : 1;
}
