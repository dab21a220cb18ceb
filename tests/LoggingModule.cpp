#include "LoggingPlugin.h"
#include "logging/LogManager.h"
#include "logging/LogMessage.h"

namespace {

using namespace Quend::Framework::Logging;

// At unload no provider is registered any more, so this message is cached and seen by nobody.
struct LastWords final : LogSinkProvider {
    ~LastWords() override { log(getChannel("c"), 1, "last words"); }
    LogSink* createSink(const char*) override { return nullptr; }
};

}  // namespace

extern "C" __declspec(dllexport) void logInModule(const wchar_t* plugin, std::uint32_t level,
                                                  const char* text) {
    if (plugin != nullptr) {
        registerSinkProvider(std::make_unique<LastWords>());
        loadPluginLibrary(plugin);
    }
    LogMessage(getChannel("c"), level) << text;
}
