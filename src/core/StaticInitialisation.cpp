// All globals that are constructed at load, in this order; at unload they are destroyed in reverse.
// The language fixes no order across source files, so they are all defined here, and only this file
// knows several subsystems.
//
// The property store is not here: it is created on first use and therefore destroyed first.
#include <windows.h>

#include <cstddef>
#include <new>

#include "core/ObjectRegistry.h"
#include "core/RandomSource.h"
#include "logging/LogManager.h"
#include "logging/ProviderRegistry.h"

namespace Quend::Framework {

namespace {
const struct KeepRuntimeLoaded {
    // GCC's runtime leaks each time it is unloaded: 73 KB, and handles and a TLS index if it has
    // thrown an exception or guarded a local static. A host that holds none of it would unload it
    // along with this library, and be aborted after some thousand times; so it stays loaded.
    // Without that runtime, as in a build by MSVC, there is no such module and nothing happens.
    KeepRuntimeLoaded() {
        HMODULE runtime = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, L"libstdc++-6.dll", &runtime);
    }
} keepRuntimeLoaded;
}  // namespace

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

// Both live in memory that is never freed, and can be called as long as the process runs. Another
// object ends each of them at unload: it replaces the manager by an unused one, and empties the
// registry, which the manager still reads afterwards.
namespace {
alignas(LogManager) std::byte managerMemory[sizeof(LogManager)];
alignas(ProviderRegistry) std::byte registryMemory[sizeof(ProviderRegistry)];
}  // namespace

LogManager& logManager = *new (managerMemory) LogManager;

namespace {
const struct EndManagerAtUnload {
    ~EndManagerAtUnload() { logManager.endAtUnload(); }
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
