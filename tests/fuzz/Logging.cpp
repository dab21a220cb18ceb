// Logging against a model of its channels and their caches, one operation after the other.
#include <array>
#include <map>
#include <memory>
#include <vector>

#include "Fuzz.h"
#include "logging/LogManager.h"
#include "logging/ProviderRegistry.h"

namespace {

using namespace Quend::Framework::Logging;

std::string written;  // to all sinks, in order
long liveSinks = 0;

struct Sink final : LogSink {
    explicit Sink(std::string name) : tag(std::move(name)) { ++liveSinks; }
    virtual ~Sink() { --liveSinks; }
    void release() noexcept override { delete this; }
    void write(std::uint32_t level, const char* text) override {
        written += tag + std::to_string(level) + text + '\n';
    }
    std::string tag;
};

bool hasSink(char provider, const std::string& channel) { return !channel.ends_with(provider); }

struct Provider final : LogSinkProvider {
    explicit Provider(char letter) : tag(letter) {}
    LogSink* createSink(const char* channel) override {
        return hasSink(tag, channel) ? new Sink(tag + std::string(channel)) : nullptr;
    }
    char tag;
};

struct Channel {
    ChannelHandle handle = nullptr;
    std::vector<std::string> sinks;  // by tag
    std::vector<std::string> cache;  // each the level and the text
    bool isEnabled = true;
};

std::string writeTo(const Channel& channel, const std::string& message) {
    std::string expected;
    for (const std::string& sink : channel.sinks) {
        expected.append(sink).append(message).append(1, '\n');
    }
    return expected;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    std::map<std::string, Channel> model;
    std::string providers;
    {
        LogManager manager;
        while (!input.isAtEnd()) {
            const unsigned operation = input.below(8);
            const std::string name = input.word<char>("aA\xff", 2);
            const bool isNew = !model.contains(name);
            Channel& channel = model[name];
            std::string expected;
            written.clear();
            const auto attach = [&] {
                channel.sinks.clear();
                for (const char provider : providers) {
                    if (hasSink(provider, name)) {
                        channel.sinks.push_back(provider + name);
                    }
                }
                for (const std::string& message : channel.cache) {
                    expected += writeTo(channel, message);
                }
                channel.cache.clear();
            };
            if (isNew) {
                channel.handle = manager.getChannel(name.c_str());
                attach();
            }
            LogChannel& real = *channel.handle->channel;
            if (operation == 0 && providers.size() < 5) {
                providers += "aA\xff"[input.below(3)];
                manager.registerSinkProvider(std::make_unique<Provider>(providers.back()));
            } else if (operation == 1) {
                real.enabled = channel.isEnabled = input.below(2) == 1;
            } else if (operation == 2) {
                for (LogSink* const sink : real.sinks) {
                    sink->release();  // as attaching forgets them
                }
                attach();
                attachSinks(real);
            } else if (operation == 3) {
                providerRegistry.clear();
                providers.clear();
            } else {
                const std::uint32_t level = std::array{0U, 10U, 4'000'000'000U}.at(input.below(3));
                const unsigned count = std::array{1U, 50U, 101U}.at(input.below(3));
                const std::string text = input.word<char>("xy", 20);
                for (unsigned i = 0; i < count; ++i) {
                    manager.log(channel.handle, level, text.c_str());
                    if (channel.sinks.empty() || providers.empty() || level == 0) {
                        if (channel.cache.size() < 102) {
                            channel.cache.push_back(channel.cache.size() < 101
                                                        ? std::to_string(level) + text
                                                        : "40LOG Cache overflow...");
                        }
                    } else if (channel.isEnabled) {
                        expected += writeTo(channel, std::to_string(level) + text);
                    }
                }
            }
            FUZZ_CHECK(written == expected);
            FUZZ_CHECK(manager.getChannel(name.c_str()) == channel.handle);
            FUZZ_CHECK(real.cache.size() == channel.cache.size());
            FUZZ_CHECK(real.overflowed == (real.cache.size() == 102 ? 1 : 0));
            for (std::size_t i = 0; i < real.cache.size(); ++i) {
                FUZZ_CHECK(std::to_string(real.cache[i].level) + real.cache[i].text ==
                           channel.cache[i]);
            }
        }
    }
    FUZZ_CHECK(liveSinks == 0 && providerRegistry.empty());
    return 0;
}
