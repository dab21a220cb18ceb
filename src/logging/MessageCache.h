/// \file
// Keeps the messages of a channel that could not be written, oldest first and bounded, for the
/// next time that sinks are attached.
///
/// A channel without sinks is the normal state of a process, so what is kept must not grow: the
/// oldest messages stay, since they tell how it all began, and what comes later is lost.
///
/// Threading: every function is called with LogManager's lock held.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quend::Framework::Logging {

struct LogChannel;

struct CachedLogRecord {
    std::uint32_t level;
    std::string text;
};

/// The most messages that a channel keeps; the marker comes on top of them.
constexpr std::size_t kCacheCapacity = 101;
constexpr std::uint32_t kCacheOverflowLevel = 40;
constexpr const char* kCacheOverflowText = "LOG Cache overflow...";

/// Keeps a copy of `text`. The first message that finds the cache full is replaced by the marker,
/// all later ones are dropped without a trace. std::bad_alloc leaves the cache as it was.
void cacheMessage(LogChannel& channel, std::uint32_t level, const char* text);

/// Writes the kept messages, the marker among them, to each sink of the channel, and empties the
/// cache, also if there is no sink to write to. A message that a sink logs meanwhile and that is
/// cached is replayed with the others. What a sink throws, or std::bad_alloc, passes through, and
/// then the cache is as it was.
void replayCache(LogChannel& channel);

}  // namespace Quend::Framework::Logging
