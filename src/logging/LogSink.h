/// \file
// What a plug-in implements: a sink, which puts messages somewhere, and a provider, which makes
/// the sinks. This header is the contract for whoever writes one.
///
/// Threading: logging calls all of it under its one lock, on the thread that caused the call.
/// So a sink sees one message at a time, whole, in the order in which the callers obtained the
/// lock, and needs no lock of its own; a slow write holds up every thread that logs. The lock is
/// recursive, but it is not the reader's: a write or createSink that waits for another thread
/// waits for ever if that thread logs.
///
/// Exceptions: what createSink and write throw passes on to the caller of getChannel or log, with
/// the lock free again. A LogMessage has no caller to pass it to and ends the process.
///
/// Lifetime at unload: first every provider is deleted, then every sink is released, channel by
/// channel in the order of their names; the module with their code stays loaded until after the
/// last release(). At the exit of the process that module's own statics may be destroyed before
/// all this, and nothing is called at all when a thread ended inside of a log call: a sink that
/// buffers flushes in write, and neither release() nor a destructor relies on statics.
#pragma once

#include <cstdint>

namespace Quend::Framework::Logging {

/// The order of the virtual operations is a binary interface with the plug-ins.
class LogSink {
 public:
    /// Holds the first slot of the table and is never called.
    virtual void reserved() {}

    /// Called once, when the channel of this sink is destroyed, which may be before the first
    /// write if the channel could not be completed. The sink frees itself; the library does not
    /// touch it again. It must not log nor ask for a channel: others are gone already.
    virtual void release() noexcept = 0;

    /// Puts out one message. `text` is zero-terminated narrow text, valid during the call only
    /// and free of any prefix, time stamp or line end; `level` is never 0 but in a replay.
    ///
    /// A write may log, on its own channel as well, ask for channels and register providers. Such
    /// a message reaches all sinks before the outer one goes on to the next sink, this one too,
    /// inside of its write: a sink that logs from here sees to it that this ends. If it throws,
    /// the sinks after it do not get the message.
    virtual void write(std::uint32_t level, const char* text) = 0;

 protected:
    /// A sink ends in release() and in nothing else.
    LogSink() = default;
    LogSink(const LogSink&) = default;
    LogSink& operator=(const LogSink&) = default;
    ~LogSink() = default;
};

/// The order of the virtual operations is a binary interface with the plug-ins.
class LogSinkProvider {
 public:
    LogSinkProvider() = default;
    LogSinkProvider(const LogSinkProvider&) = delete;
    LogSinkProvider& operator=(const LogSinkProvider&) = delete;

    /// The library deletes a registered provider at unload, under the lock and out of the
    /// registry already; one whose registration failed at once, without the lock. Sinks it made
    /// live on. It may log and ask for channels.
    virtual ~LogSinkProvider() = default;

    /// Returns a new sink for the named channel, which the library then owns until release(), or
    /// null for none. `channelName` is valid during the call only. Called once for each channel,
    /// while that is being created, provider after provider in the order of registration; one
    /// registered later is never asked for a channel that exists.
    ///
    /// It may log, ask for channels and register providers; a provider registered here is first
    /// asked for the next channel. Asking for a channel that does not exist yet asks all
    /// providers again, this one too: also for the name at hand, so a provider sees to it that
    /// this ends. The inner call's channel is then the one that stays.
    ///
    /// If it throws, the channel is not created, and the sinks that other providers made for it
    /// are released; the next getChannel of that name starts anew.
    virtual LogSink* createSink(const char* channelName) = 0;
};

/// A plug-in library is a DLL with this one exported function. It is called once, under the lock,
/// and gives its provider away; null or an exception refuse to be loaded. The class is not a
/// plain C type: library and plug-in come from the same compiler.
///
///     extern "C" __declspec(dllexport) LogSinkProvider* createLogSinkProvider();
using CreateLogSinkProvider = LogSinkProvider*();
constexpr const char* kPluginEntryPoint = "createLogSinkProvider";

}  // namespace Quend::Framework::Logging
