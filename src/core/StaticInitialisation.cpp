// Every global of the library that is constructed at load, in the order in which that happens;
// at unload they are destroyed in the reverse order. Across source files the language fixes no
// order, so they all stand here, and this is the one file that knows several subsystems.
//
// The property store is not among them: it is made on first use and therefore destroyed first.
#include <cstddef>
#include <new>

#include "core/ObjectRegistry.h"
#include "core/RandomSource.h"
#include "logging/LogManager.h"
#include "logging/ProviderRegistry.h"

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

namespace Logging {

// These two are placed into memory that is never given back, and ended by an object of their
// own: the manager stays whole when its lock cannot be had, and looks into the registry when
// that has been emptied already.
namespace {
alignas(LogManager) std::byte managerMemory[sizeof(LogManager)];
alignas(ProviderRegistry) std::byte registryMemory[sizeof(ProviderRegistry)];
}  // namespace

LogManager& logManager = *new (managerMemory) LogManager;

namespace {
const struct EndManagerAtUnload {
    ~EndManagerAtUnload() { logManager.destroyUnlessHeld(); }
} endManagerAtUnload;
}  // namespace

ProviderRegistry& providerRegistry = *new (registryMemory) ProviderRegistry;

namespace {
const struct EmptyRegistryAtUnload {
    ~EmptyRegistryAtUnload() { ProviderRegistry().swap(providerRegistry); }
} emptyRegistryAtUnload;
}  // namespace

}  // namespace Logging
}  // namespace Quend::Framework
