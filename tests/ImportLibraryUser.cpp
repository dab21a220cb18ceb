// A program without a C runtime, linked by a linker that knows nothing of GCC: it shows that the
// import library works there.
#include <Quend/Framework/MemoryManager.h>

extern "C" int start() {
    return Quend::Framework::Management::MemoryManager::allocate(16) != nullptr ? 0 : 1;
}
