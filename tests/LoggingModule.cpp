// The whole library linked into a module, so that logging is loaded, used and unloaded as well.
#include <cstring>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

#include "LoggingPlugin.h"
#include "logging/LogManager.h"
#include "logging/LogMessage.h"
#include "support/Tally.h"

namespace {

using namespace Quend::Framework::Logging;

Tally* current = nullptr;

struct Sink final : LogSink {
    Sink() { ++current->objects; }
    ~Sink() { --current->objects; }
    void release() noexcept override { delete this; }
    void write(std::uint32_t, const char* text) override {
        --current->messages;
        if (std::strcmp(text, "throw") == 0) {
            throw std::runtime_error("on purpose");
        }
    }
};

struct Provider final : LogSinkProvider {
    // At unload no provider is registered any more, so this message is cached and seen by nobody.
    ~Provider() override { log(getChannel("silent"), 1, "last words"); }
    LogSink* createSink(const char* channel) override {
        return std::strcmp(channel, "silent") == 0 ? nullptr : new Sink;
    }
};

}  // namespace

extern "C" __declspec(dllexport) void work(Tally* tally) {
    static std::once_flag once;
    std::call_once(once, [tally] {
        current = tally;
        registerSinkProvider(std::make_unique<Provider>());
    });
    for (int i = 0; i < 100; ++i) {
        const std::string name = "channel " + std::to_string(i % 5);
        tally->messages += 2;
        LogMessage(getChannel(name.c_str()), 10) << "message " << i << " of " << 100;
        LogMessage(getChannel("silent"), 10) << "half of it: " << i / 2.0;  // into the cache
        tally->requireThrow<std::runtime_error>(
            [&] { log(getChannel(name.c_str()), 10, "throw"); });
    }
}

extern "C" __declspec(dllexport) void logInModule(const wchar_t* plugin, std::uint32_t level,
                                                  const char* text) {
    if (plugin != nullptr) {
        registerSinkProvider(std::make_unique<Provider>());
        loadPluginLibrary(plugin);
    }
    LogMessage(getChannel("silent"), level) << text;
}
