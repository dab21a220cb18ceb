#include "LoggingPlugin.h"

#include <windows.h>

#include <cstring>

#include "logging/LogSink.h"

namespace {

using namespace Quend::Framework::Logging;

Report reportTo = nullptr;
bool refuses = false;

struct Sink final : LogSink {
    ~Sink() = default;
    void release() noexcept override {
        reportTo("release");
        delete this;
    }
    void write(std::uint32_t, const char* text) override {
        reportTo(text);
        if (std::strcmp(text, "block") == 0) {
            Sleep(INFINITE);
        }
    }
};

struct Provider final : LogSinkProvider {
    ~Provider() override { reportTo("~provider"); }
    LogSink* createSink(const char*) override { return new Sink; }
};

}  // namespace

extern "C" __declspec(dllexport) void preparePlugin(Report report, bool isRefusing) {
    reportTo = report;
    refuses = isRefusing;
}

extern "C" __declspec(dllexport) LogSinkProvider* createLogSinkProvider() {
    return refuses ? nullptr : new Provider;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_DETACH && reportTo != nullptr) {
        reportTo("gone");
    }
    return TRUE;
}
