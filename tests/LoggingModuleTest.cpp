// The parts of logging that need Windows: plug-in libraries, unloading, and the environment.
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
#include "support/ModuleExport.h"
#include "support/PlatformCalls.h"

namespace {

using namespace Quend::Framework::Logging;

const wchar_t* const kPlugin = L"LoggingPlugin.dll";
const wchar_t* const kModule = L"LoggingModule.dll";
std::string& events = *new std::string;  // not destroyed: plug-ins may end later

void record(const char* event) { events.append(event).append(" "); }

std::string takeEvents() { return std::exchange(events, {}); }

// Keeps the plug-in loaded while it is being prepared.
class PreparedPlugin {
 public:
    explicit PreparedPlugin(Report report, bool isRefusing = false)
        : module(LoadLibraryW(kPlugin)) {
        tests::exportOf<PreparePlugin>(module, "preparePlugin")(report, isRefusing);
    }
    ~PreparedPlugin() { FreeLibrary(module); }
    PreparedPlugin(const PreparedPlugin&) = delete;
    PreparedPlugin& operator=(const PreparedPlugin&) = delete;

 private:
    HMODULE module;
};

TEST(LoggingPlugin, WhatCannotBeLoadedLeavesNothingBehind) {
    struct Row {
        const wchar_t* path;
        const char* error;
        int code;
    };
    for (const auto& [path, error, code] :
         {Row{kPlugin, "The entry point of the plug-in library returned no provider", 0},
          Row{kModule, "The plug-in library has no entry point createLogSinkProvider", 0},
          Row{L"no such \u00e9.dll", "Cannot load the plug-in library no such ?.dll",
              ERROR_MOD_NOT_FOUND}}) {
        LogManager manager;
        {
            const PreparedPlugin prepared(record, true);
            try {
                manager.loadPluginLibrary(path);
                ADD_FAILURE();
            } catch (const std::runtime_error& caught) {
                EXPECT_EQ(std::string(caught.what()).find(error), 0U) << caught.what();
                const auto* refusal = dynamic_cast<const std::system_error*>(&caught);
                EXPECT_EQ(refusal != nullptr ? refusal->code().value() : 0, code);
            }
        }
        EXPECT_TRUE(providerRegistry.empty());
        EXPECT_EQ(GetModuleHandleW(path), nullptr);
        EXPECT_EQ(takeEvents(), "gone ");
        std::thread([&] { manager.getChannel("c"); }).join();  // the lock is free
    }
}

TEST(LoggingPlugin, FailedAllocationLeavesNothingLoaded) {
    ProviderRegistry().swap(providerRegistry);  // which keeps its room
    tests::failEachAllocation([](long, auto fail) {
        {
            LogManager manager;
            const bool failed = [&] {
                const PreparedPlugin plugin([](const char*) {});
                return fail([&] { manager.loadPluginLibrary(kPlugin); });
            }();
            EXPECT_EQ(providerRegistry.size(), failed ? 0U : 1U);
            EXPECT_EQ(GetModuleHandleW(kPlugin) == nullptr, failed);
        }
        ProviderRegistry().swap(providerRegistry);
        EXPECT_EQ(GetModuleHandleW(kPlugin), nullptr);
        return 0L;
    });
}

TEST(LoggingPlugin, ShutdownReleasesInOrderAndEachOnce) {
    {
        LogManager manager;
        {
            const PreparedPlugin plugin(record);
            manager.loadPluginLibrary(kPlugin);
        }
        manager.log(manager.getChannel("c"), 1, "text");
        EXPECT_EQ(takeEvents(), "text ");
        const auto hook =
            tests::hook<"FreeLibrary", decltype(FreeLibrary)>([](auto real, HMODULE module) {
                record("FreeLibrary");
                return real(module);
            });
        manager.shutdownLogging();
        // Released in its turn, but its code stays until the last sink is gone.
        EXPECT_EQ(takeEvents(), "~provider FreeLibrary release FreeLibrary gone ");
    }
    EXPECT_EQ(takeEvents(), "");
}

HMODULE logInLoadedModule(Report report, const char* text) {
    const HMODULE module = LoadLibraryW(kModule);
    const PreparedPlugin plugin(report);
    tests::exportOf<LogInModule>(module, "logInModule")(kPlugin, 1, text);
    return module;
}

TEST(LoggingPlugin, UnloadingTheWholeModuleEndsItsPluginsOnce) {
    EXPECT_TRUE(FreeLibrary(logInLoadedModule(record, "text")));
    EXPECT_EQ(takeEvents(), "text ~provider release gone ");
    EXPECT_EQ(GetModuleHandleW(kModule), nullptr);
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

using Getenv = errno_t(std::size_t*, wchar_t*, std::size_t, const wchar_t*);
Getenv* originalGetenv = nullptr;
int environmentReads = 0;
int failingRead = 0;

// Windows, unlike Wine, does not treat a query for the size as an error.
errno_t countingGetenv(std::size_t* size, wchar_t* buffer, std::size_t room, const wchar_t* name) {
    const errno_t error = originalGetenv(size, buffer, room, name);
    return ++environmentReads == failingRead ? EINVAL : room == 0 ? 0 : error;
}

TEST(LoggingEnvironment, DebugStringIsRead) {
    const tests::ImportPatch patch("_wgetenv_s", reinterpret_cast<void*>(&countingGetenv));
    originalGetenv = patch.original<Getenv>();
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
        EXPECT_EQ(isRequested ? setting : value, value);
    }
    _wputenv_s(L"QUEND_OUTPUT_DEBUG_STRING", L"");
}

TEST(LoggingEnvironment, OnlyTheFirstLoggedMessageReadsTheDebugString) {
    const HMODULE module = LoadLibraryW(kModule);
    {
        const tests::ImportPatch patch("_wgetenv_s", reinterpret_cast<void*>(&countingGetenv),
                                       module);
        originalGetenv = patch.original<Getenv>();
        failingRead = 0;
        auto* const logInModule = tests::exportOf<LogInModule>(module, "logInModule");
        environmentReads = 0;
        logInModule(nullptr, 0, "not logged");
        EXPECT_EQ(environmentReads, 0);
        logInModule(nullptr, 1, "the first");
        EXPECT_EQ(environmentReads, 1);  // it is not there
        logInModule(nullptr, 1, "the second");
        EXPECT_EQ(environmentReads, 1);
    }
    FreeLibrary(module);
}

}  // namespace
