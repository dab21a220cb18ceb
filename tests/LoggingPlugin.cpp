#include "LoggingPlugin.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>

#include "logging/LogSink.h"

namespace {

using namespace Quend::Framework::Logging;

Report reportTo = nullptr;
EntryPoint entryPoint = EntryPoint::kProvides;

struct Sink final : LogSink {
    virtual ~Sink() = default;
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

extern "C" __declspec(dllexport) void preparePlugin(Report report, EntryPoint behaviour) {
    reportTo = report;
    entryPoint = behaviour;
}

extern "C" __declspec(dllexport) LogSinkProvider* createLogSinkProvider() {
    switch (entryPoint) {
        case EntryPoint::kReturnsNull:
            return nullptr;
        case EntryPoint::kThrows:
            throw std::runtime_error("no sinks today");
        case EntryPoint::kThrowsAnInteger:
            throw 7;
        default:
            return new Provider;
    }
}

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_DETACH && reportTo != nullptr) {
        reportTo("gone");
    }
    return TRUE;
}
