// A program without a C runtime, linked by a linker that knows nothing of GCC: it shows that the
// import library works there.
#include <Quend/Framework/MemoryManager.h>

namespace memory = Quend::Framework::Management::MemoryManager;

extern "C" int start() {
    void* const block = memory::allocate(16);
    memory::deallocate(block);
    return block != nullptr ? 0 : 1;
}
