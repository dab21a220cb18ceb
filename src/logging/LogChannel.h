/// \file
// A named log channel: its sinks, and the messages that wait for some.
///
/// Threading: guarded by LogManager's lock, all of it. Components do not touch a channel; they
/// keep its handle. Lifetime: from the first getChannel of its name until logging shuts down.
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
    /// Releases the sinks, in order. What is still cached is written nowhere.
    ~LogChannel();
    LogChannel(const LogChannel&) = delete;
    LogChannel& operator=(const LogChannel&) = delete;

    std::vector<LogSink*> sinks;  // owned; in the order in which the providers were asked
    std::string name;
    std::vector<CachedLogRecord> cache;
    std::uint32_t overflowed = 0;  // 1 once the cache holds its marker

    /// Kept with the channel for those who configure it; no message is held against it.
    std::uint32_t levelSetting = 50;
    /// False drops the messages that would be written. Those that would be cached still are.
    bool enabled = true;
};

/// Where a handle points: it never moves, so components can hold on to it.
struct ChannelSlot {
    std::unique_ptr<LogChannel> channel;  // never null
};
using ChannelHandle = ChannelSlot*;

/// Writes to each sink in turn. What one throws passes through; those after it get nothing. Called
/// with LogManager's lock held.
void writeToSinks(const LogChannel& channel, std::uint32_t level, const char* text);

/// Asks every registered provider for its sink and replays the cache to them. Sinks attached
/// before are forgotten, not released. Called with LogManager's lock held.
///
/// What a provider or sink throws passes through, as does std::bad_alloc: the sinks made until
/// then are the channel's, and the cache is as it was.
void attachSinks(LogChannel& channel);

}  // namespace Quend::Framework::Logging
