// One sink, which only counts, on one channel. Bare: the same virtual call behind a plain
// std::recursive_mutex; for LogMessage, with the text put together by std::to_chars before; for
// the full cache, the lock and one comparison. Each is out of line.
#include <charconv>
#include <memory>
#include <mutex>
#include <string_view>

#include "Bench.h"
#include "logging/LogManager.h"
#include "logging/LogMessage.h"
#include "logging/MessageCache.h"

namespace bench {
namespace {

using namespace Quend::Framework::Logging;

class CountingSink final : public LogSink {
 public:
    void release() noexcept override { delete this; }
    void write(std::uint32_t /*level*/, const char* /*text*/) override { ++count; }

 private:
    unsigned long count = 0;
};

class CountingProvider final : public LogSinkProvider {
 public:
    LogSink* createSink(const char* channelName) override {
        return channelName == std::string_view("counted") ? new CountingSink : nullptr;
    }
};

struct Bare {
    std::recursive_mutex mutex;
    LogSink* sink = new CountingSink;
    bool isFull = true;
};

void addIntegersFrom(ChannelHandle channel, const char* name, int threads) {
    addCase(
        name,
        [channel, i = 1000]() mutable {
            ++i;
            LogMessage(channel, 10) << "Read " << i << " records of " << i * 3;
        },
        threads);
}

}  // namespace

void addLogging() {
    registerSinkProvider(std::make_unique<CountingProvider>());
    auto* const channel = getChannel("counted");
    auto& bare = *new Bare;

    addCase("log/ours", [channel] { log(channel, 10, "Reading all records"); });
    addCase("log/bare", [&bare]() BENCH_OUT_OF_LINE {
        const std::lock_guard lock(bare.mutex);
        bare.sink->write(10, "Reading all records");
    });

    addIntegersFrom(channel, "LogMessage/ours", 1);
    addCase("LogMessage/bare", [&bare, i = 1000]() mutable BENCH_OUT_OF_LINE {
        ++i;
        char text[64];
        char* const end = text + sizeof(text) - 1;
        char* next = text + std::string_view("Read ").copy(text, 5);
        next = std::to_chars(next, end, i).ptr;
        next += std::string_view(" records of ").copy(next, 12);
        next = std::to_chars(next, end, i * 3).ptr;
        *next = '\0';
        const std::lock_guard lock(bare.mutex);
        bare.sink->write(10, text);
    });

    auto* const cached = getChannel("cached");
    for (std::size_t i = 0; i <= kCacheCapacity; ++i) {
        log(cached, 10, "Reading all records");
    }
    addCase("full cache/ours", [cached] { log(cached, 10, "Reading all records"); });
    addCase("full cache/bare", [&bare]() BENCH_OUT_OF_LINE {
        const std::lock_guard lock(bare.mutex);
        return bare.isFull;
    });

#ifndef QUEND_COUNT_INSTRUCTIONS
    addIntegersFrom(channel, "2 threads/ours", 2);
    addIntegersFrom(channel, "8 threads/ours", 8);
#endif
}

}  // namespace bench
