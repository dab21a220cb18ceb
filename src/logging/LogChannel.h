/// \file
/// A log channel, what a handle to it is, and how messages get to its sinks.
///
/// Threading: guarded by LogManager's lock, as are all functions here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "logging/LogSink.h"
#include "logging/MessageCache.h"

namespace Quend::Framework::Logging {

/// A named channel: its sinks, and the messages that were not written to them.
///
/// A channel lives from the first getChannel of its name until logging shuts down. Components keep
/// its handle and never touch the channel.
struct LogChannel {
    explicit LogChannel(const char* channelName) : name(channelName) {}
    /// Releases the sinks, in order. Cached messages are lost.
    ~LogChannel();
    LogChannel(const LogChannel&) = delete;
    LogChannel& operator=(const LogChannel&) = delete;

    std::vector<LogSink*> sinks;  // owned; in the order in which the providers were asked
    std::string name;
    std::vector<CachedLogRecord> cache;
    /// 0, and 1 once the cache holds its marker; a number because the fields' widths are settled.
    std::uint32_t overflowed = 0;

    /// Kept with each channel as its configuration; the library compares no level with it.
    std::uint32_t levelSetting = 50;
    /// Nothing here changes it. A channel with sinks writes its messages if true and drops them if
    /// false. A channel without sinks caches them either way.
    bool enabled = true;
};

/// A handle points to a slot, and the slot to the channel. The slot never moves, so the channel
/// could be replaced while components keep their handles; nothing does so yet.
struct ChannelSlot {
    std::unique_ptr<LogChannel> channel;  // never null
};
using ChannelHandle = ChannelSlot*;

/// Writes to each sink in turn.
/// Throws: what a sink throws; the sinks after it do not get the message.
void writeToSinks(const LogChannel& channel, std::uint32_t level, const char* text);

/// Gives the channel a sink from each registered provider, and replays its cache to them.
///
/// getChannel calls this once for a channel that it creates, which has no sinks and an empty cache.
/// On any other channel, the sinks that it had are forgotten and never released.
/// Throws: what a provider or sink throws; std::bad_alloc.
/// On failure: the channel keeps the sinks made so far, and the cache is as before.
void attachSinks(LogChannel& channel);

}  // namespace Quend::Framework::Logging
