// The whole library linked into a module, so that logging is loaded, used and unloaded as well.
// Built under two names: as a module, and as the plug-in that the module loads.
#include "LoggingModule.h"

#include <windows.h>

#include <mutex>
#include <stdexcept>

#include "logging/LogMessage.h"
#include "models/Logging.h"
#include "support/Tally.h"

namespace {

using namespace tests;

Tally* current = nullptr;
EntryPoint entryPoint = EntryPoint::kReturnsProvider;

[[noreturn]] void throwOnPurpose() { throw std::runtime_error("on purpose"); }

void onWrite(const std::string& text) {
    if (current != nullptr) {
        --current->messages;
    }
    if (text == "throw") {
        throwOnPurpose();
    }
    if (text == "block") {
        Sleep(INFINITE);
    }
}

// Logs when it is deleted. At unload no provider is registered any more, so that message is cached
// and seen by nobody.
std::unique_ptr<LogSinkProvider> makeProvider(const char* tag) {
    std::shared_ptr<void> end(nullptr, [](void*) { log(getChannel("none"), 1, "last words"); });
    return std::make_unique<TestProvider>(tag, onWrite, [end](const std::string&) {});
}

}  // namespace

extern "C" __declspec(dllexport) void work(Tally* tally) {
    static std::once_flag once;
    std::call_once(once, [tally] {
        current = tally;
        registerSinkProvider(makeProvider("p"));
    });
    for (int i = 0; i < 100; ++i) {
        const std::string name = "channel " + std::to_string(i % 5);
        tally->messages += 2;
        LogMessage(getChannel(name.c_str()), 10) << "message " << i << " of " << 100;
        LogMessage(getChannel("none"), 10) << "half of it: " << i / 2.0;  // into the cache
        tally->requireThrow<std::runtime_error>(
            [&] { log(getChannel(name.c_str()), 10, "throw"); });
    }
}

extern "C" __declspec(dllexport) void logInModule(const wchar_t* plugin, std::uint32_t level,
                                                  const char* text) {
    if (plugin != nullptr) {
        registerSinkProvider(makeProvider("own"));
        loadPluginLibrary(plugin);
    }
    LogMessage(getChannel("own"), level) << text;
}

extern "C" __declspec(dllexport) void prepareModule(Report newReport, EntryPoint newEntryPoint) {
    report = newReport;
    entryPoint = newEntryPoint;
}

// Its author has left the noexcept out.
extern "C" __declspec(dllexport) LogSinkProvider* createLogSinkProvider() {
    switch (entryPoint) {
        case EntryPoint::kReturnsProvider:
            return makeProvider("p").release();
        case EntryPoint::kReturnsNull:
            return nullptr;
        case EntryPoint::kThrows:
            break;
    }
    throwOnPurpose();
}

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        report = [](std::string_view) {};
    } else if (reason == DLL_PROCESS_DETACH) {
        record("gone");
    }
    return TRUE;
}
