/// \file
// Where messages are handed in and go from there: to the sinks of their channel, or into its
/// cache.
///
/// Threading: any thread may call any of it at any time. One recursive lock makes each call a
/// single step, the calls into providers and sinks included, which may therefore call back.
///
/// Lifetime: made when the library is loaded, shut down at unload; handles are valid until then.
/// Every function throws std::system_error when the lock cannot be had, and then did nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "logging/LogChannel.h"
#include "logging/LogSink.h"
#include "logging/PluginLibrary.h"
#include "locking/RecursiveMutex.h"

namespace Quend::Framework::Logging {

class LogManager {
 public:
    LogManager() = default;
    ~LogManager();
    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;

    /// Finds the channel of that name, compared byte by byte, or creates it and attaches a sink
    /// from each provider. Never null; the channel belongs to the manager. `name` is zero-
    /// terminated, copied, and must not be null, which is not checked.
    ///
    /// What a provider throws passes through, as does std::bad_alloc: there is no such channel
    /// then, and the sinks made for it are released. Should a provider ask for the very name that
    /// it is being asked about, that inner call's channel stays and this one's sinks are released.
    ChannelHandle getChannel(const char* name);

    /// Writes `text` to each sink of the channel in turn. It is cached instead if the channel has
    /// no sink, or no provider is registered, or `level` is 0; and dropped if it would be written
    /// but the channel is not enabled. `text` is zero-terminated and not null, unchecked.
    ///
    /// What a sink throws passes through; sinks before it have the message, those after it have
    /// not. std::bad_alloc while caching leaves the cache as it was.
    void log(ChannelHandle handle, std::uint32_t level, const char* text);

    /// Takes the provider over and asks it for a sink for each channel created from now on;
    /// channels that exist get none. On any failure it is deleted and nothing has changed:
    /// Exceptions::InvalidArgument for null, std::bad_alloc.
    void registerSinkProvider(std::unique_ptr<LogSinkProvider> provider);

    /// Loads a plug-in library and registers the provider that its entry point makes; both stay
    /// until logging shuts down. On any failure the module is released again and nothing has
    /// changed: std::system_error with the system's code if the module cannot be loaded,
    /// std::runtime_error with the reason if the entry point fails, std::bad_alloc.
    void loadPluginLibrary(const std::wstring& path);

    /// Deletes the providers in the order of registration, releases the plug-in libraries, and
    /// destroys the channels in the order of their names; the handles are invalid then. Nobody
    /// may be inside of another call.
    void shutdownLogging();

    /// Ends a manager that nobody would destroy otherwise: that of the process, at unload.
    ///
    /// If another thread holds the lock, nothing is released and the manager stays as it is. At
    /// the exit of a process the other threads are stopped wherever they are, and a lock that
    /// one of them holds is never given back: waiting for it would hang the exit for good. On
    /// any other way to unload, nobody is inside of the library.
    void destroyUnlessHeld();

 private:
    /// std::less<> finds a `const char*` without making a std::string of it first.
    using ChannelMap = std::map<std::string, std::unique_ptr<ChannelSlot>, std::less<>>;

    /// All guarded by mutex.
    ChannelMap channels;
    std::vector<std::unique_ptr<PluginLibrary>> pluginLibraries;
    std::vector<std::unique_ptr<LogSinkProvider>> ownedProviders;
    RecursiveMutex mutex;
    bool alive = true;  // memory without a manager in it reads false: nothing to shut down
    /// Plug-in libraries are released before the channels are destroyed, whose sinks have their
    /// code there. So each module is held twice, and let go of here when the last sink is gone.
    std::vector<std::unique_ptr<Module>> modulesOfSinks;
};

/// The manager of the process, at a place in memory that outlives every clean-up.
extern LogManager& logManager;

/// What components call: the same, on the manager of the process.
ChannelHandle getChannel(const char* name);
void log(ChannelHandle channel, std::uint32_t level, const char* text);
void registerSinkProvider(std::unique_ptr<LogSinkProvider> provider);
void loadPluginLibrary(const std::wstring& path);

}  // namespace Quend::Framework::Logging
