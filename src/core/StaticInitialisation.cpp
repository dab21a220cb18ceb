// Every global of the library that is constructed at load, in the order in which that happens;
// at unload they are destroyed in the reverse order. Across source files the language fixes no
// order, so they all stand here, and this is the one file that knows several subsystems.
//
// The property store is not among them: it is made on first use and therefore destroyed first.
#include "core/ObjectRegistry.h"
#include "core/RandomSource.h"

namespace Quend::Framework {

Management::MemoryManager::ObjectRegistry Management::MemoryManager::objectRegistry;

namespace Framework {

namespace {
const struct SeedAtLoad {
    SeedAtLoad() { seedRandomSource(); }
} seedAtLoad;
}  // namespace

std::uint32_t randomCallCounter = 0;
std::mutex randomMutex;

}  // namespace Framework
}  // namespace Quend::Framework
