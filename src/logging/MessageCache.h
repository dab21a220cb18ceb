/// \file
/// The messages of a channel that could not be written, oldest first.
///
/// A channel gets its sinks when it is created, before any message. So what is cached stays in the
/// cache until logging shuts down, and is lost then: a debugger or a component that looks into the
/// channel sees it. To have messages written, register providers before components ask for their
/// channels.
///
/// Bounded, since a process without any sink is the normal case. The oldest messages stay, because
/// they tell how it began.
/// Throws: std::bad_alloc; the cache is as before then.
/// Threading: called with LogManager's lock held.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quend::Framework::Logging {

struct LogChannel;

/// One message in the cache of a channel.
struct CachedLogRecord {
    std::uint32_t level;
    std::string text;
};

/// The most messages that a channel keeps; the marker comes on top.
constexpr std::size_t kCacheCapacity = 101;
constexpr std::uint32_t kCacheOverflowLevel = 40;
constexpr const char* kCacheOverflowText = "LOG Cache overflow...";

/// Keeps a copy of `text`. The first message that finds the cache full is replaced by the marker;
/// all later ones are dropped.
void cacheMessage(LogChannel& channel, std::uint32_t level, const char* text);

/// Writes the kept messages and the marker to each sink, and empties the cache, even without sinks.
/// Messages that a sink logs meanwhile into this cache are replayed as well.
///
/// For code that attaches sinks to a channel in use. The library does not: attachSinks calls this
/// for a new channel only, whose cache is empty.
/// Throws: what a sink throws; the cache is as before then.
void replayCache(LogChannel& channel);

}  // namespace Quend::Framework::Logging
