// The states of a cache:
//   filling     overflowed 0, fewer than kCacheCapacity records
//   full        overflowed 0, kCacheCapacity records; the next message becomes the marker
//   overflowed  overflowed 1, the marker is the last record; messages are dropped
// A replay leads back to filling; without one, a cache stays as it is until shutdown.
#include "logging/MessageCache.h"

#include "logging/LogChannel.h"

namespace Quend::Framework::Logging {

void cacheMessage(LogChannel& channel, std::uint32_t level, const char* text) {
    if (channel.overflowed != 0) {
        return;
    }
    if (channel.cache.size() < kCacheCapacity) {
        channel.cache.push_back({level, text});
        return;
    }
    channel.cache.push_back({kCacheOverflowLevel, kCacheOverflowText});
    channel.overflowed = 1;
}

void replayCache(LogChannel& channel) {
    // A sink may log while it writes, and the cache grow and move its records. So the size is read
    // each time, and the record is a copy.
    for (std::size_t i = 0; i < channel.cache.size(); ++i) {
        const CachedLogRecord record = channel.cache[i];
        writeToSinks(channel, record.level, record.text.c_str());
    }
    channel.cache.clear();
    channel.overflowed = 0;
}

}  // namespace Quend::Framework::Logging
