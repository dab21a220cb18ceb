// What of logging needs Windows: plug-in libraries, unloading, and the environment.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "LoggingPlugin.h"
#include "logging/DebugString.h"
#include "logging/LogManager.h"
#include "logging/ProviderRegistry.h"
#include "support/Allocations.h"
#include "support/ImportPatch.h"

namespace {

using namespace Quend::Framework::Logging;

const wchar_t* const kPlugin = L"LoggingPlugin.dll";
std::string& events = *new std::string;  // not destroyed: plug-ins may end later

void record(const char* event) { events.append(event).append(" "); }

template <typename Function>
Function* findIn(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Keeps the plug-in loaded while it is being prepared.
class PreparedPlugin {
 public:
    explicit PreparedPlugin(EntryPoint behaviour, Report report = record)
        : module(LoadLibraryW(kPlugin)) {
        findIn<PreparePlugin>(module, "preparePlugin")(report, behaviour);
    }
    ~PreparedPlugin() { FreeLibrary(module); }
    PreparedPlugin(const PreparedPlugin&) = delete;
    PreparedPlugin& operator=(const PreparedPlugin&) = delete;

 private:
    HMODULE module;
};

TEST(LoggingPlugin, WhatCannotBeLoadedLeavesNothingBehind) {
    struct Row {
        EntryPoint behaviour;
        const wchar_t* path;
        const char* error;
    };
    const std::string failed = "The entry point of the plug-in library failed: ";
    for (const auto& [behaviour, path, error] :
         {Row{EntryPoint::kReturnsNull, kPlugin, "it returned no provider"},
          Row{EntryPoint::kThrows, kPlugin, "no sinks today"},
          Row{EntryPoint::kThrowsAnInteger, kPlugin, "an exception of an unknown type"},
          Row{EntryPoint::kProvides, L"LoggingModule.dll", nullptr}}) {
        LogManager manager;
        auto prepared = std::make_unique<PreparedPlugin>(behaviour);
        events.clear();
        try {
            manager.loadPluginLibrary(path);
            ADD_FAILURE();
        } catch (const std::runtime_error& caught) {
            EXPECT_EQ(caught.what(),
                      error != nullptr
                          ? failed + error
                          : "The plug-in library has no entry point createLogSinkProvider");
        }
        EXPECT_TRUE(providerRegistry.empty());
        prepared.reset();
        EXPECT_EQ(GetModuleHandleW(path), nullptr);
        EXPECT_EQ(events, "gone ");
        std::thread([&] { manager.getChannel("c"); }).join();  // the lock is free
    }
    try {
        LogManager().loadPluginLibrary(L"no such \u00e9.dll");
        ADD_FAILURE();
    } catch (const std::system_error& caught) {
        EXPECT_EQ(caught.code().value(), ERROR_MOD_NOT_FOUND);
        EXPECT_EQ(std::string(caught.what()).find("Cannot load the plug-in library no such ?.dll"),
                  0U);
    }
}

TEST(LoggingPlugin, FailedAllocationLeavesNothingLoaded) {
    tests::failEachAllocation([](long, auto fail) {
        {
            LogManager manager;
            const PreparedPlugin plugin(EntryPoint::kProvides, [](const char*) {});
            const bool failed = fail([&] {
                try {
                    manager.loadPluginLibrary(kPlugin);
                } catch (const std::runtime_error& error) {  // made of the plug-in's bad_alloc
                    throw std::bad_alloc();
                }
            });
            EXPECT_EQ(providerRegistry.size(), failed ? 0U : 1U);
        }
        ProviderRegistry().swap(providerRegistry);  // which keeps its room
        EXPECT_EQ(GetModuleHandleW(kPlugin), nullptr);
        return 0L;
    });
}

BOOL (*WINAPI originalFreeLibrary)(HMODULE) = nullptr;

BOOL WINAPI recordingFreeLibrary(HMODULE module) {
    record("FreeLibrary");
    return originalFreeLibrary(module);
}

TEST(LoggingPlugin, ShutdownReleasesInOrderAndEachOnce) {
    {
        LogManager manager;
        {
            const PreparedPlugin plugin(EntryPoint::kProvides);
            manager.loadPluginLibrary(kPlugin);
        }
        manager.log(manager.getChannel("c"), 1, "text");
        EXPECT_EQ(std::exchange(events, {}), "text ");
        const tests::ImportPatch patch("FreeLibrary",
                                       reinterpret_cast<void*>(&recordingFreeLibrary));
        originalFreeLibrary = patch.original<BOOL WINAPI(HMODULE)>();
        manager.shutdownLogging();
        // Released where it is due; but its code stays until the last sink is gone.
        EXPECT_EQ(std::exchange(events, {}), "~provider FreeLibrary release FreeLibrary gone ");
    }
    EXPECT_EQ(events, "");
}

HMODULE logInLoadedModule(Report report, const char* text) {
    const HMODULE module = LoadLibraryW(L"LoggingModule.dll");
    const PreparedPlugin plugin(EntryPoint::kProvides, report);
    findIn<LogInModule>(module, "logInModule")(kPlugin, text);
    return module;
}

TEST(LoggingPlugin, UnloadingTheWholeModuleEndsItsPluginsOnce) {
    EXPECT_TRUE(FreeLibrary(logInLoadedModule(record, "text")));
    EXPECT_EQ(events, "text ~provider release gone ");
    EXPECT_EQ(GetModuleHandleW(L"LoggingModule.dll"), nullptr);
    EXPECT_EQ(GetModuleHandleW(kPlugin), nullptr);
}

HANDLE entered = nullptr;

void reportToStderr(const char* event) {
    std::fprintf(stderr, "%s ", event);
    SetEvent(entered);
}

void exitWithModuleLoaded(const char* text, bool isThreadInside) {
    entered = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread thread([=] { logInLoadedModule(reportToStderr, text); });
    WaitForSingleObject(entered, INFINITE);
    isThreadInside ? thread.detach() : thread.join();
    std::exit(7);
}

TEST(LoggingPluginDeathTest, ProcessExitDoesNotWaitForAThreadStoppedInASink) {
    EXPECT_EXIT(exitWithModuleLoaded("text", false), testing::ExitedWithCode(7),
                "^text gone ~provider release $");
    EXPECT_EXIT(exitWithModuleLoaded("block", true), testing::ExitedWithCode(7), "^block gone $");
}

int environmentReads = 0;
int failingRead = 0;
errno_t (*originalGetenv)(std::size_t*, wchar_t*, std::size_t, const wchar_t*) = nullptr;

// Asked for the size alone, Windows does not call that an error, other than Wine.
errno_t countingGetenv(std::size_t* size, wchar_t* buffer, std::size_t room, const wchar_t* name) {
    const errno_t error = originalGetenv(size, buffer, room, name);
    return ++environmentReads == failingRead ? EINVAL : room == 0 ? 0 : error;
}

TEST(LoggingEnvironment, DebugStringIsReadOnceAtTheFirstMessage) {
    const tests::ImportPatch patch("_wgetenv_s", reinterpret_cast<void*>(&countingGetenv));
    originalGetenv = patch.original<errno_t(std::size_t*, wchar_t*, std::size_t, const wchar_t*)>();
    struct Row {
        const wchar_t* value;
        int failing;
        bool isRequested;
        int reads;
    };
    for (const auto& [value, failing, isRequested, reads] :
         {Row{L"", 0, false, 1}, Row{L"1", 0, true, 2}, Row{L"longer than in place", 0, true, 2},
          Row{L"1", 1, false, 1}, Row{L"1", 2, false, 2}}) {
        _wputenv_s(L"QUEND_OUTPUT_DEBUG_STRING", value);  // an empty one removes it
        environmentReads = 0;
        failingRead = failing;
        std::wstring setting;
        EXPECT_EQ(readDebugString(setting), isRequested);
        EXPECT_EQ(environmentReads, reads);
        if (isRequested) {
            EXPECT_EQ(setting, value);
        }
    }
    environmentReads = 0;
    auto* const handle = getChannel("c");
    EXPECT_EQ(environmentReads, 0);
    log(handle, 1, "first");
    log(handle, 1, "second");
    EXPECT_EQ(environmentReads, 2);
}

}  // namespace
