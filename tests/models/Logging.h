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

enum class LoggingStep { kLog, kLogMany, kRegister, kForgetProviders, kAttach, kSwitch };

inline void checkLogging(Input input) {
    struct Channel {
        ChannelHandle handle = nullptr;
        std::vector<std::string> sinks;  // by tag
        std::vector<std::string> cache;  // each the level and the text
        bool isEnabled = true;
    };
    std::map<std::string, Channel> model;
    std::vector<std::string> providers;  // by tag
    std::string atShutdown;
    LogManager manager;
    while (!input.isAtEnd()) {
        const std::string name = input.oneOf({"", "a", "A", "aa", "a ", "aA", "\xff", "none"});
        Channel& channel = model[name];
        std::string expected;  // of the sinks
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
            for (const std::string& message : channel.cache) {
                write(message);
            }
            channel.cache.clear();
        };
        const auto log = [&](std::uint32_t level, const std::string& text) {
            manager.log(channel.handle, level, text.c_str());
            const std::string message = std::to_string(level) + text;
            if (!channel.sinks.empty() && !providers.empty() && level != 0) {
                if (channel.isEnabled) {
                    write(message);
                }
            } else if (channel.cache.size() < 101) {
                channel.cache.push_back(message);
            } else if (channel.cache.size() == 101) {
                channel.cache.emplace_back("40LOG Cache overflow...");
            }
        };

        if (channel.handle == nullptr) {
            channel.handle = manager.getChannel(name.c_str());
            attach();
        }
        LogChannel& real = *channel.handle->channel;
        switch (input.oneOf({LoggingStep::kLog, LoggingStep::kLogMany, LoggingStep::kRegister,
                             LoggingStep::kForgetProviders, LoggingStep::kAttach,
                             LoggingStep::kSwitch, LoggingStep::kLog, LoggingStep::kRegister})) {
            case LoggingStep::kLog:
                log(input.oneOf({0U, 10U, 4'000'000'000U}), input.oneOf({"", "text"}));
                break;
            case LoggingStep::kLogMany:
                for (int i = 0; i < 60; ++i) {
                    log(10, "beyond a short string");
                }
                break;
            case LoggingStep::kRegister: {
                const std::string tag = input.oneOf({"a", "A", "\xff"});
                if (providers.size() < 5) {
                    providers.push_back(tag);
                    manager.registerSinkProvider(std::make_unique<TestProvider>(tag));
                    atShutdown.append("~").append(tag).append(" ");
                }
                break;
            }
            case LoggingStep::kForgetProviders:
                providers.clear();
                providerRegistry.clear();
                break;
            case LoggingStep::kAttach:
                for (LogSink* const sink : real.sinks) {
                    sink->release();  // as attaching forgets them
                }
                takeEvents();
                attach();
                attachSinks(real);
                break;
            case LoggingStep::kSwitch:
                channel.isEnabled = !channel.isEnabled;
                real.enabled = channel.isEnabled;
                break;
        }

        MODEL_CHECK(takeEvents() == expected);
        MODEL_CHECK(real.name == name);
        MODEL_CHECK(manager.getChannel(name.c_str()) == channel.handle);
        MODEL_CHECK(real.levelSetting == 50);
        MODEL_CHECK((real.overflowed != 0) == (channel.cache.size() == 102));
        const auto isCached = [](const CachedLogRecord& record, const std::string& message) {
            return std::to_string(record.level) + record.text == message;
        };
        MODEL_CHECK(std::ranges::equal(real.cache, channel.cache, isCached));
    }
    for (const auto& [name, channel] : model) {
        for (const std::string& sink : channel.sinks) {
            atShutdown.append("-").append(sink).append(" ");
        }
    }
    manager.shutdownLogging();
    MODEL_CHECK(takeEvents() == atShutdown);
    MODEL_CHECK(providerRegistry.empty());
}

}  // namespace tests
