// The whole library linked into a module, so that logging is loaded, used and unloaded as well.
// Built under two names: as a module, and as the plug-in that the module loads.
#include "LoggingModule.h"

#include <windows.h>

#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

#include "logging/LogManager.h"
#include "logging/LogMessage.h"
#include "support/Tally.h"

namespace {

using namespace Quend::Framework::Logging;

Tally ownTally;
Tally* current = &ownTally;
Report reportTo = [](const char*) {};
bool refuses = false;

struct Sink final : LogSink {
    Sink() { ++current->objects; }
    ~Sink() { --current->objects; }
    void release() noexcept override {
        reportTo("release");
        delete this;
    }
    void write(std::uint32_t, const char* text) override {
        reportTo(text);
        --current->messages;
        if (std::string("throw") == text) {
            throw std::runtime_error("on purpose");
        }
        std::string("block") == text ? Sleep(INFINITE) : void();
    }
};

struct Provider final : LogSinkProvider {
    explicit Provider(std::string channelWithoutSink) : silent(std::move(channelWithoutSink)) {}
    // At unload no provider is registered any more, so this message is cached and seen by nobody.
    ~Provider() override {
        reportTo("~provider");
        log(getChannel("silent"), 1, "last words");
    }
    LogSink* createSink(const char* channel) override {
        return channel == silent ? nullptr : new Sink;
    }
    std::string silent;
};

}  // namespace

extern "C" __declspec(dllexport) void work(Tally* tally) {
    static std::once_flag once;
    std::call_once(once, [tally] {
        current = tally;
        registerSinkProvider(std::make_unique<Provider>("silent"));
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
        registerSinkProvider(std::make_unique<Provider>("silent"));
        loadPluginLibrary(plugin);
    }
    LogMessage(getChannel("silent"), level) << text;
}

extern "C" __declspec(dllexport) void prepareModule(Report report, bool isRefusing) {
    reportTo = report;
    refuses = isRefusing;
}

extern "C" __declspec(dllexport) LogSinkProvider* createLogSinkProvider() {
    return refuses ? nullptr : new Provider("");
}

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    reason == DLL_PROCESS_DETACH ? reportTo("gone") : void();
    return TRUE;
}
