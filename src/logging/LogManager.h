/// \file
/// The process-wide log manager, and the functions by which components log.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "locking/RecursiveMutex.h"
#include "logging/LogChannel.h"
#include "logging/LogSink.h"
#include "logging/PluginLibrary.h"

namespace Quend::Framework::Logging {

/// Takes messages and passes them to the sinks of their channel, or into its cache.
///
/// Owns the channels, providers and plug-ins. The process-wide manager exists from load to unload;
/// handles are valid until then.
/// Throws: std::system_error if the lock cannot be taken; nothing has changed then. std::bad_alloc.
/// Threading: any thread may call any function at any time. One recursive lock makes each call
/// atomic, with its calls into providers and sinks, which may call back.
/// Requires: names and texts are zero-terminated and not null, which is not checked.
class LogManager {
 public:
    LogManager() = default;
    ~LogManager();
    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;

    /// Returns the channel of that name, compared byte by byte; the first call creates it and
    /// attaches a sink from each provider. Never null. `name` is read before any provider runs.
    ///
    /// If a provider asks for the same name from inside, that inner call's channel stays.
    /// Throws: what a provider throws.
    /// Ownership: the channel belongs to the manager.
    /// On failure: there is no such channel, and the sinks made for it are released.
    ChannelHandle getChannel(const char* name);

    /// Writes `text` to each sink of the channel. Caches it instead if the channel has no sink, no
    /// provider is registered, or `level` is 0. Drops it if the channel is disabled and has sinks.
    /// Throws: what a sink throws; the sinks after it do not get the message.
    /// On failure: the cache is as before.
    void log(ChannelHandle handle, std::uint32_t level, const char* text);

    /// Adds a provider, which is asked for a sink for each channel created from now on.
    /// Throws: Exceptions::InvalidArgument, "A sink provider must not be null."
    /// Ownership: the manager takes the provider over, and deletes it at shutdown.
    /// On failure: the provider is deleted and nothing has changed.
    void registerSinkProvider(std::unique_ptr<LogSinkProvider> provider);

    /// Loads a plug-in library and registers its provider; both stay until logging shuts down.
    /// Throws: std::system_error with the system's code if the module cannot be loaded;
    /// std::runtime_error if it has no entry point or refuses.
    /// On failure: the module is released and nothing has changed.
    void loadPluginLibrary(const std::wstring& path);

    /// Deletes the providers in the order of registration, releases the plug-in libraries, and
    /// destroys the channels in the order of their names. All handles are invalid then.
    /// Requires: no other call is running.
    void shutdownLogging();

    /// Destroys the process-wide manager at unload and puts an unused one in its place: at process
    /// exit a module's clean-up may still log after its own manager has ended.
    ///
    /// At process exit the other threads are stopped anywhere. If one of them holds the lock, it is
    /// never free again, and waiting for it would hang the exit. The manager is abandoned then, and
    /// nothing is released.
    void endAtUnload() noexcept;

 private:
    /// std::less<> finds a `const char*` without making a std::string of it first.
    using ChannelMap = std::map<std::string, std::unique_ptr<ChannelSlot>, std::less<>>;

    /// All guarded by mutex. An unused manager holds no memory, so that the one that nobody
    /// destroys at unload leaks none; some libraries allocate for an empty map.
    std::optional<ChannelMap> channels;
    std::vector<std::unique_ptr<PluginLibrary>> pluginLibraries;
    std::vector<std::unique_ptr<LogSinkProvider>> ownedProviders;
    RecursiveMutex mutex;
    bool alive = true;  // part of the manager's state; nothing here sets it to false
    /// A second reference to each plug-in module, released after the last sink: plug-in libraries
    /// are released before the channels, whose sinks have their code there.
    std::vector<std::unique_ptr<Module>> modulesOfSinks;
};

/// The process-wide manager, in memory that outlives every clean-up.
extern LogManager& logManager;

/// The same on the process-wide manager, for components.
ChannelHandle getChannel(const char* name);
void log(ChannelHandle channel, std::uint32_t level, const char* text);
void registerSinkProvider(std::unique_ptr<LogSinkProvider> provider);
void loadPluginLibrary(const std::wstring& path);

}  // namespace Quend::Framework::Logging
