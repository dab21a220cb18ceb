// Invariants between calls: every provider that was registered when a channel was created has been
// asked for its sink; every owned provider is in providerRegistry, until one of the two is emptied
// at unload; modulesOfSinks has one entry for each in pluginLibraries.
//
// Providers and sinks run under the lock and may call back. So nothing that an inner call could
// move is used after such a call: no iterator into a vector, no reference to an entry.
#include "logging/LogManager.h"

#include <Quend/Framework/Exceptions.h>

#include <algorithm>
#include <mutex>
#include <string_view>
#include <utility>

#include "logging/DebugString.h"
#include "logging/ProviderRegistry.h"

namespace Quend::Framework::Logging {

LogManager::~LogManager() { shutdownLogging(); }

ChannelHandle LogManager::getChannel(const char* name) {
    const std::lock_guard lock(mutex);
    if (!channels) {
        channels.emplace();
    }
    const auto found = channels->find(std::string_view(name));
    if (found != channels->end()) {
        return found->second.get();
    }
    auto slot = std::make_unique<ChannelSlot>(ChannelSlot{std::make_unique<LogChannel>(name)});
    // Inserted only once it is complete, so that nobody finds a channel that then fails.
    attachSinks(*slot->channel);
    // The channel's copy of the name: a provider may have changed or freed the caller's meanwhile.
    const std::string& key = slot->channel->name;
    return channels->try_emplace(key, std::move(slot)).first->second.get();
}

void LogManager::log(ChannelHandle handle, std::uint32_t level, const char* text) {
    const std::lock_guard lock(mutex);

    // Read once, at the first message, and kept for the process; nothing here acts on them.
    static std::wstring debugStringSetting;
    [[maybe_unused]] static const bool debugStringRequested = readDebugString(debugStringSetting);

    LogChannel& channel = *handle->channel;
    if (channel.sinks.empty() || providerRegistry.empty() || level == 0) {
        cacheMessage(channel, level, text);
        return;
    }
    if (!channel.enabled) {
        return;
    }
    writeToSinks(channel, level, text);
}

void LogManager::registerSinkProvider(std::unique_ptr<LogSinkProvider> provider) {
    if (provider == nullptr) {
        throw Exceptions::InvalidArgument("A sink provider must not be null.");
    }
    const std::lock_guard lock(mutex);
    ownedProviders.reserve(ownedProviders.size() + 1);
    providerRegistry.push_back(provider.get());
    ownedProviders.push_back(std::move(provider));
}

void LogManager::loadPluginLibrary(const std::wstring& path) {
    const std::lock_guard lock(mutex);
    // On failure these are destroyed in reverse order: the provider before the module with its
    // code.
    auto library = std::make_unique<PluginLibrary>(path);
    auto moduleOfSinks = std::make_unique<Module>(path);
    auto provider = library->createProvider();
    pluginLibraries.reserve(pluginLibraries.size() + 1);
    modulesOfSinks.reserve(modulesOfSinks.size() + 1);
    registerSinkProvider(std::move(provider));
    pluginLibraries.push_back(std::move(library));
    modulesOfSinks.push_back(std::move(moduleOfSinks));
}

void LogManager::shutdownLogging() {
    const std::lock_guard lock(mutex);
    if (!alive) {
        return;
    }
    while (!ownedProviders.empty()) {
        // Leaves both lists before it is deleted, since its destructor may log.
        const auto provider = std::move(ownedProviders.front());
        ownedProviders.erase(ownedProviders.begin());
        const auto found =
            std::find(providerRegistry.begin(), providerRegistry.end(), provider.get());
        if (found != providerRegistry.end()) {
            providerRegistry.erase(found);
        }
    }
    for (auto& library : pluginLibraries) {
        library.reset();
    }
    pluginLibraries.clear();
    while (channels && !channels->empty()) {  // first to last, which clear() does not promise
        channels->erase(channels->begin());
    }
    modulesOfSinks.clear();
}

void LogManager::endAtUnload() noexcept {
    if (mutex.try_lock()) {
        mutex.unlock();
        std::destroy_at(this);
    }
    std::construct_at(this);
}

ChannelHandle getChannel(const char* name) { return logManager.getChannel(name); }

void log(ChannelHandle channel, std::uint32_t level, const char* text) {
    logManager.log(channel, level, text);
}

void registerSinkProvider(std::unique_ptr<LogSinkProvider> provider) {
    logManager.registerSinkProvider(std::move(provider));
}

void loadPluginLibrary(const std::wstring& path) { logManager.loadPluginLibrary(path); }

}  // namespace Quend::Framework::Logging
