// One sink, which only counts, on one channel. Bare: the same virtual call behind a plain
// std::recursive_mutex; for LogMessage, with the text composed by std::to_chars first; for
// the full cache, the lock and one comparison.
//
// The peer gets the same message with the same arguments, one sink that only counts under a
// std::mutex, and formats no prefix. It stamps each message with the time and the thread.
#include <charconv>
#include <memory>
#include <mutex>
#include <string_view>

#include "Bench.h"
#include "logging/LogManager.h"
#include "logging/LogMessage.h"
#include "logging/MessageCache.h"

#ifdef QUEND_PEERS
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#endif

namespace bench {
namespace {

using namespace Quend::Framework::Logging;

constexpr const char* kText = "Reading all records";

// The provider and the bare side share it.
struct CountingSink final : LogSink {
    void release() noexcept override {}
    void write(std::uint32_t /*level*/, const char* /*text*/) override { ++count; }
    unsigned long count = 0;
} countingSink;

struct CountingProvider final : LogSinkProvider {
    LogSink* createSink(const char* channelName) override {
        return channelName == std::string_view("counted") ? &countingSink : nullptr;
    }
};

struct Bare {
    std::recursive_mutex mutex;
    LogSink* sink = &countingSink;
    bool isFull = true;
};

auto buildBare(const std::shared_ptr<Bare>& bare) {
    return byAddress([bare, i = 1000]() mutable {
        ++i;
        char text[64];
        char* const end = text + sizeof(text) - 1;
        char* next = text + std::string_view("Read ").copy(text, 5);
        next = std::to_chars(next, end, i).ptr;
        next += std::string_view(" records of ").copy(next, 12);
        next = std::to_chars(next, end, i * 3).ptr;
        *next = '\0';  // NOLINT(clang-analyzer-security.ArrayBound): to_chars stops at end
        const std::lock_guard lock(bare->mutex);
        bare->sink->write(10, text);
    });
}

const std::string kLongText(300, 'x');

#ifdef QUEND_PEERS
class PeerSink final : public spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(const spdlog::details::log_msg& /*message*/) override { ++count; }
    void flush_() override {}
    unsigned long count = 0;
};

void addPeer() {
    const auto logger = std::make_shared<spdlog::logger>("bench", std::make_shared<PeerSink>());
    addCase("log/spdlog", [logger] { logger->info(kText); });
    addCase("LogMessage/spdlog", [logger, i = 1000]() mutable {
        ++i;
        logger->info("Read {} records of {}", i, i * 3);
    });
    addCase("LogMessage point/spdlog", [logger, i = 1000]() mutable {
        ++i;
        logger->info("Took {:g} ms", i / 8.0);
    });
    addCase("LogMessage 300/spdlog", [logger] { logger->info("{}", kLongText); });
}
#endif

const Group logging([] {
    registerSinkProvider(std::make_unique<CountingProvider>());
    const auto bare = std::make_shared<Bare>();
    auto* const channel = getChannel("counted");
    addCase("log/ours", [channel] { log(channel, 10, kText); });
    addCase("log/bare", byAddress([bare] {
                const std::lock_guard lock(bare->mutex);
                bare->sink->write(10, kText);
            }));
    addCase("LogMessage/ours", [channel, i = 1000]() mutable {
        ++i;
        LogMessage(channel, 10) << "Read " << i << " records of " << i * 3;
    });
    addCase("LogMessage/bare", buildBare(bare));
    auto* const cached = getChannel("cached");
    for (std::size_t i = 0; i <= kCacheCapacity; ++i) {
        log(cached, 10, kText);
    }
    addCase("full cache/ours", [cached] { log(cached, 10, kText); });
    addCase("full cache/bare", byAddress([bare] {
                const std::lock_guard lock(bare->mutex);
                return bare->isFull;
            }));
#ifdef QUEND_PEERS
    addCase("LogMessage point/ours", [channel, i = 1000]() mutable {
        ++i;
        LogMessage(channel, 10) << "Took " << i / 8.0 << " ms";
    });
    addCase("LogMessage 300/ours", [channel] { LogMessage(channel, 10) << kLongText; });
    addPeer();
#endif
});

}  // namespace
}  // namespace bench
