// Logging against a model of its channels and their caches.
#pragma once

#include "logging/LogManager.h"
#include "logging/ProviderRegistry.h"
#include "models/Input.h"

namespace tests {

using namespace Quend::Framework::Logging;
using Callback = std::function<void(const std::string&)>;

// What reached the sinks and providers, in order. Has room, so that recording allocates nothing.
inline std::string events;
inline void (*report)(std::string_view) = [](std::string_view piece) { events.append(piece); };

template <typename... Pieces>
void record(const Pieces&... pieces) {
    (report(pieces), ...);
    report(" ");
}

inline std::string takeEvents() {
    std::string taken = events;
    events.clear();
    return taken;
}

struct TestSink final : LogSink {
    TestSink(std::string sinkTag, Callback write)
        : tag(std::move(sinkTag)), onWrite(std::move(write)) {}
    void release() noexcept override {
        record("-", tag);
        delete this;
    }
    void write(std::uint32_t level, const char* text) override {
        record(tag, ":", std::to_string(level), text);
        if (onWrite) {
            onWrite(text);
        }
    }
    std::string tag;
    Callback onWrite;
};

// Its sinks are tagged with its own tag and the channel's name. None for a name that ends in its
// own tag, nor for "none".
struct TestProvider final : LogSinkProvider {
    explicit TestProvider(std::string providerTag, Callback write = {}, Callback create = {})
        : tag(std::move(providerTag)), onWrite(std::move(write)), onCreate(std::move(create)) {}
    ~TestProvider() override { record("~", tag); }
    LogSink* createSink(const char* channel) override {
        if (onCreate) {
            onCreate(channel);
        }
        return hasSink(tag, channel) ? new TestSink(tag + channel, onWrite) : nullptr;
    }
    static bool hasSink(const std::string& tag, const std::string& channel) {
        return channel != "none" && !channel.ends_with(tag);
    }
    std::string tag;
    Callback onWrite;
    Callback onCreate;
};

// Another thread can take the lock.
inline void expectLockFree(LogManager& manager) {
    std::thread([&] { manager.getChannel("none"); }).join();
}

enum class LoggingStep { kRegister, kAttach, kSwitch, kClear, kLog };

inline void checkLogging(Input input) {
    struct Channel {
        ChannelHandle handle = nullptr;
        std::vector<std::string> sinks;  // by tag
        std::vector<std::string> cache;  // each the level and the text
        bool isEnabled = true;
    };
    std::map<std::string, Channel> model;
    std::vector<std::string> providers;
    std::string atShutdown;
    LogManager manager;
    while (!input.isAtEnd()) {
        const LoggingStep step =
            input.oneOf({LoggingStep::kRegister, LoggingStep::kAttach, LoggingStep::kSwitch,
                         LoggingStep::kClear, LoggingStep::kLog, LoggingStep::kLog,
                         LoggingStep::kLog, LoggingStep::kLog});
        const std::string name = input.oneOf({"", "a", "A", "aa", "a ", "aA", "\xff", "none"});
        Channel& channel = model[name];
        std::string expected;
        const auto write = [&](const std::string& message) {
            for (const std::string& sink : channel.sinks) {
                expected.append(sink).append(":").append(message).append(" ");
            }
        };
        const auto attach = [&] {
            channel.sinks.clear();
            for (const std::string& provider : providers) {
                if (TestProvider::hasSink(provider, name)) {
                    channel.sinks.push_back(provider + name);
                }
            }
            for (const std::string& message : std::exchange(channel.cache, {})) {
                write(message);
            }
        };
        if (channel.handle == nullptr) {
            channel.handle = manager.getChannel(name.c_str());
            attach();
        }
        LogChannel& real = *channel.handle->channel;
        if (step == LoggingStep::kRegister && providers.size() < 5) {
            providers.emplace_back(input.oneOf({"a", "A", "\xff"}));
            manager.registerSinkProvider(std::make_unique<TestProvider>(providers.back()));
            atShutdown.append("~").append(providers.back()).append(" ");
        } else if (step == LoggingStep::kAttach) {
            for (LogSink* const sink : real.sinks) {
                sink->release();  // as attaching forgets them
            }
            events.clear();
            attach();
            attachSinks(real);
        } else if (step == LoggingStep::kSwitch) {
            real.enabled = channel.isEnabled = !channel.isEnabled;
        } else if (step == LoggingStep::kClear && input.byte() % 4 == 0) {
            providerRegistry.clear();
            providers.clear();
        } else {
            const std::uint32_t level = input.oneOf({0U, 10U, 4'000'000'000U});
            const char* const text = input.oneOf({"", "text", "beyond a short string"});
            const std::string message = std::to_string(level) + text;
            for (int i = input.oneOf({1, 50, 101}); i > 0; --i) {
                manager.log(channel.handle, level, text);
                const std::size_t cached = channel.cache.size();
                if (!channel.sinks.empty() && !providers.empty() && level != 0) {
                    if (channel.isEnabled) {
                        write(message);
                    }
                } else if (cached < 101) {
                    channel.cache.push_back(message);
                } else if (cached == 101) {
                    channel.cache.emplace_back("40LOG Cache overflow...");
                }
            }
        }
        MODEL_CHECK(takeEvents() == expected);
        MODEL_CHECK(real.name == name && manager.getChannel(name.c_str()) == channel.handle);
        MODEL_CHECK(real.overflowed == (channel.cache.size() == 102 ? 1U : 0U));
        MODEL_CHECK(real.cache.size() == channel.cache.size() && real.levelSetting == 50);
        for (std::size_t i = 0; i < real.cache.size(); ++i) {
            MODEL_CHECK(std::to_string(real.cache[i].level) + real.cache[i].text ==
                        channel.cache[i]);
        }
    }
    for (const auto& [name, channel] : model) {
        for (const std::string& sink : channel.sinks) {
            atShutdown.append("-").append(sink).append(" ");
        }
    }
    manager.shutdownLogging();
    MODEL_CHECK(takeEvents() == atShutdown && providerRegistry.empty());
}

}  // namespace tests
