/// \file
/// A named log channel: its sinks, and the messages that wait for some.
///
/// A channel lives from the first getChannel of its name until logging shuts down. Components keep
/// its handle and never touch the channel.
/// Threading: guarded by LogManager's lock, as are all functions here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "logging/LogSink.h"
#include "logging/MessageCache.h"

namespace Quend::Framework::Logging {

struct LogChannel {
    explicit LogChannel(const char* channelName) : name(channelName) {}
    /// Releases the sinks, in order. Cached messages are lost.
    ~LogChannel();
    LogChannel(const LogChannel&) = delete;
    LogChannel& operator=(const LogChannel&) = delete;

    std::vector<LogSink*> sinks;  // owned; in the order in which the providers were asked
    std::string name;
    std::vector<CachedLogRecord> cache;
    std::uint32_t overflowed = 0;  // 1 once the cache holds its marker

    /// Kept for configuration; no message's level is compared with it.
    std::uint32_t levelSetting = 50;
    /// If false, messages that would be written are dropped; others are still cached.
    bool enabled = true;
};

/// What a handle points to. It never moves.
struct ChannelSlot {
    std::unique_ptr<LogChannel> channel;  // never null
};
using ChannelHandle = ChannelSlot*;

/// Writes to each sink in turn.
/// Throws: what a sink throws; the sinks after it do not get the message.
void writeToSinks(const LogChannel& channel, std::uint32_t level, const char* text);

/// Asks every registered provider for its sink and replays the cache to them. Earlier sinks are
/// dropped without release().
/// Throws: what a provider or sink throws; std::bad_alloc.
/// On failure: the channel keeps the sinks made so far, and the cache is as before.
void attachSinks(LogChannel& channel);

}  // namespace Quend::Framework::Logging
