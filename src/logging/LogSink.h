/// \file
/// What a plug-in implements: sinks, which output messages, and a provider, which creates the
/// sinks.
///
/// Throws: what createSink and write throw reaches the caller of getChannel or log, with the lock
/// free. It has no caller to reach from a LogMessage, and ends the process.
/// Threading: the library calls sinks and providers under logging's one lock, on the thread that
/// caused the call. So a sink sees whole messages, one at a time, and needs no lock of its own; a
/// slow write holds up every thread that logs. The lock is recursive, so a sink may log. Never wait
/// in write or createSink for another thread that may log: that deadlocks. Only a provider that
/// could not be registered may be deleted without the lock.
/// Ownership: at unload every provider is deleted first, then every sink is released, by channel
/// name. The module with their code stays loaded until the last release() has returned. At process
/// exit the module's statics may be destroyed before that, and nothing is called if a thread was
/// stopped inside a log call. So flush in write, and use no statics in release() or a destructor. A
/// module with logging of its own may still log there, but its earlier handles are invalid.
#pragma once

#include <cstdint>

namespace Quend::Framework::Logging {

/// One output of one channel. The order of the virtual operations is a binary interface.
class LogSink {
 public:
    /// Reserves the first slot; never called.
    virtual void reserved() {}

    /// Called once, when the channel is destroyed; the sink frees itself. May come before the first
    /// write, if the channel could not be completed.
    /// Requires: must not log nor ask for a channel, as others are destroyed already.
    virtual void release() noexcept = 0;

    /// Outputs one message. `text` is zero-terminated, valid during the call only, without prefix,
    /// time stamp or line end. `level` is never 0, unless replayCache is called for the channel.
    ///
    /// May log, ask for channels and register providers. A message logged from here reaches all
    /// sinks of its channel at once, this one included: it must guard against endless recursion.
    /// On failure: if it throws, the sinks after it do not get the message.
    virtual void write(std::uint32_t level, const char* text) = 0;

 protected:
    /// A sink ends in release() and in nothing else.
    LogSink() = default;
    LogSink(const LogSink&) = default;
    LogSink& operator=(const LogSink&) = default;
    ~LogSink() = default;
};

/// Creates the sinks. The order of the virtual operations is a binary interface.
class LogSinkProvider {
 public:
    LogSinkProvider() = default;
    LogSinkProvider(const LogSinkProvider&) = delete;
    LogSinkProvider& operator=(const LogSinkProvider&) = delete;

    /// The library deletes a registered provider at unload, under the lock; its sinks live on. May
    /// log and ask for channels.
    virtual ~LogSinkProvider() = default;

    /// Returns a new sink for the channel, or null for none. Called once while a channel is
    /// created, in the order of registration; never for a channel that exists already.
    /// `channelName` is valid during the call only.
    ///
    /// May log, ask for channels and register providers, which are asked from the next channel on.
    /// To ask for a channel that does not exist calls all providers again, this one included, even
    /// for the same name: it must guard against endless recursion. The inner call's channel stays.
    /// Ownership: the library owns the sink until release().
    /// On failure: if it throws, the channel is not created and the sinks made for it are released.
    virtual LogSink* createSink(const char* channelName) = 0;
};

/// A plug-in library is a DLL that exports this function, built by the same compiler:
///
///     extern "C" __declspec(dllexport) LogSinkProvider* createLogSinkProvider() noexcept;
///
/// Called once, under the lock; null refuses to be loaded.
/// Throws: nothing; an exception ends the program.
/// Ownership: the library takes the provider over.
using CreateLogSinkProvider = LogSinkProvider*() noexcept;
constexpr const char* kPluginEntryPoint = "createLogSinkProvider";

}  // namespace Quend::Framework::Logging
