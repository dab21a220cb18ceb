// The parts of logging that need Windows: plug-in libraries, unloading, and the environment.
#include "LoggingModule.h"
#include "logging/DebugString.h"
#include "models/Logging.h"
#include "support/Allocations.h"
#include "support/PlatformCalls.h"
#include "support/Test.h"

namespace {

using namespace tests;

const wchar_t* const kPlugin = L"LoggingPlugin.dll";
const wchar_t* const kModule = L"LoggingModule.dll";

// The plug-in stays loaded as long as the result lives.
std::shared_ptr<HINSTANCE__> preparePlugin(Report whereTo = report,
                                           EntryPoint entryPoint = EntryPoint::kReturnsProvider) {
    events.clear();
    std::shared_ptr<HINSTANCE__> module(LoadLibraryW(kPlugin), FreeLibrary);
    exportOf<PrepareModule>(module.get(), "prepareModule")(whereTo, entryPoint);
    return module;
}

TEST(LoggingPlugin, BringsASinkToEachChannelUntilShutdown) {
    LogManager manager;
    auto plugin = preparePlugin();
    manager.loadPluginLibrary(kPlugin);
    plugin.reset();
    EXPECT_NE(GetModuleHandleW(kPlugin), nullptr) << "only the manager keeps it loaded now";
    manager.log(manager.getChannel("network"), 10, " connected");
    EXPECT_EQ(takeEvents(), "pnetwork:10 connected ");
    {
        const Hook hook("FreeLibrary", FreeLibrary, [](auto real, HMODULE module) {
            record("FreeLibrary");
            return real(module);
        });
        manager.shutdownLogging();
        manager.shutdownLogging();
    }
    // Released once, in its turn, but its code stays until the last sink is gone.
    EXPECT_EQ(takeEvents(), "~p FreeLibrary -pnetwork FreeLibrary gone ");
    EXPECT_EQ(GetModuleHandleW(kPlugin), nullptr);
}

TEST(LoggingPlugin, WhatCannotBeLoadedLeavesNothingBehind) {
    struct Row {
        const wchar_t* path{};
        const char* error{};
        int code = 0;
    };
    const Row rows[] = {
        {.path = kPlugin, .error = "The entry point of the plug-in library returned no provider"},
        {.path = L"ClientModule.dll",
         .error = "The plug-in library has no entry point createLogSinkProvider"},
        {.path = L"no such \u00e9.dll",
         .error = "Cannot load the plug-in library no such ?.dll",
         .code = ERROR_MOD_NOT_FOUND},
    };
    for (const Row& row : rows) {
        LogManager manager;
        auto prepared = preparePlugin(report, EntryPoint::kReturnsNull);
        try {
            manager.loadPluginLibrary(row.path);
            ADD_FAILURE();
        } catch (const std::system_error& caught) {
            EXPECT_TRUE(std::string(caught.what()).starts_with(row.error)) << caught.what();
            EXPECT_EQ(caught.code().value(), row.code);
        } catch (const std::runtime_error& caught) {
            EXPECT_STREQ(caught.what(), row.error);
            EXPECT_EQ(row.code, 0);
        }
        prepared.reset();
        EXPECT_TRUE(providerRegistry.empty());
        EXPECT_EQ(GetModuleHandleW(row.path), nullptr);
        EXPECT_EQ(takeEvents(), "gone ");
        expectLockFree(manager);
    }
}

TEST(LoggingPlugin, FailedAllocationLeavesNothingLoaded) {
    ProviderRegistry().swap(providerRegistry);  // which keeps its room
    failEachAllocation([](long, auto fail) {
        LogManager manager;
        auto plugin = preparePlugin([](std::string_view) {});
        const bool failed = fail([&] { manager.loadPluginLibrary(kPlugin); });
        plugin.reset();
        EXPECT_EQ(providerRegistry.size(), failed ? 0U : 1U);
        EXPECT_EQ(GetModuleHandleW(kPlugin) == nullptr, failed);
        manager.shutdownLogging();
        ProviderRegistry().swap(providerRegistry);
        EXPECT_EQ(GetModuleHandleW(kPlugin), nullptr);
    });
}

TEST(LoggingPluginDeathTest, ExceptionOutOfTheEntryPointEndsTheProgram) {
    const auto plugin = preparePlugin(report, EntryPoint::kThrows);
    LogManager manager;
    EXPECT_DEATH(manager.loadPluginLibrary(kPlugin), "");
}

void printEvent(std::string_view piece) { std::fwrite(piece.data(), 1, piece.size(), stderr); }

// A module logs to the sink of its plug-in; then the process ends.
void exitWithPluginLoaded() {
    const HMODULE module = LoadLibraryW(kModule);
    const auto plugin = preparePlugin(printEvent);
    exportOf<LogInModule>(module, "logInModule")(kPlugin, 1, "text");
    std::exit(7);
}

HANDLE sinkEntered = nullptr;

void printEventAndSayWhenBlocked(std::string_view piece) {
    static bool isBlockNext = false;
    printEvent(piece);
    if (isBlockNext) {  // this piece was the space behind it, so all of the event is printed
        SetEvent(sinkEntered);
    }
    isBlockNext = piece == "block";
}

// The process ends while a thread is stopped in a sink of `stoppedIn`, under its lock.
void exitWithThreadInside(const wchar_t* stoppedIn, const wchar_t* loadsFirst) {
    const HMODULE module = LoadLibraryW(kModule);
    const HMODULE plugin = LoadLibraryW(kPlugin);
    sinkEntered = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    for (const HMODULE each : {module, plugin}) {
        exportOf<PrepareModule>(each, "prepareModule")(printEventAndSayWhenBlocked,
                                                       EntryPoint::kReturnsProvider);
    }
    exportOf<LogInModule>(module, "logInModule")(kPlugin, 1, "text");
    std::thread([=] {
        auto* const logInModule = exportOf<LogInModule>(GetModuleHandleW(stoppedIn), "logInModule");
        logInModule(loadsFirst, 1, "block");
    }).detach();
    WaitForSingleObject(sinkEntered, INFINITE);
    std::exit(7);
}

// The plug-in's own clean-up comes first; then its provider logs once more when it is deleted.
TEST(LoggingPluginDeathTest, ProcessExitEndsThePlugins) {
    EXPECT_EXIT(exitWithPluginLoaded(), testing::ExitedWithCode(7), "^pown:1text gone ~p -pown $");
}

TEST(LoggingPluginDeathTest, ProcessExitDoesNotWaitForAThreadStoppedInASink) {
    EXPECT_EXIT(exitWithThreadInside(kModule, nullptr), testing::ExitedWithCode(7),
                "^pown:1text pown:1block gone gone $");
    EXPECT_EXIT(exitWithThreadInside(kPlugin, kModule), testing::ExitedWithCode(7),
                "^pown:1text pown:1block gone gone ~own ~p -pown $");
}

using Getenv = errno_t (*)(std::size_t*, wchar_t*, std::size_t, const wchar_t*);
const Getenv imported = _wgetenv_s;  // the others of this name are inline functions
int environmentReads = 0;
int failingRead = 0;

// Windows, unlike Wine, does not treat a query for the size as an error.
const auto countingGetenv = [](auto real, auto* size, auto* buffer, std::size_t room,
                               auto* name) -> errno_t {
    const errno_t error = real(size, buffer, room, name);
    ++environmentReads;
    if (environmentReads == failingRead) {
        return EINVAL;
    }
    return room == 0 ? 0 : error;
};

TEST(LoggingEnvironment, DebugStringIsRead) {
    const Hook hook("_wgetenv_s", imported, countingGetenv);
    struct Row {
        const wchar_t* value{};
        bool isRequested{};
        int reads{};
        int failing = 0;  // of the reads
    };
    const Row rows[] = {
        {.value = L"longer than in place", .isRequested = true, .reads = 2},
        {.value = L"1", .isRequested = false, .reads = 1, .failing = 1},
        {.value = L"1", .isRequested = false, .reads = 2, .failing = 2},
        {.value = L"", .isRequested = false, .reads = 1},  // an empty one removes it
    };
    for (const Row& row : rows) {
        _wputenv_s(L"QUEND_OUTPUT_DEBUG_STRING", row.value);
        environmentReads = 0;
        failingRead = row.failing;
        std::wstring setting;
        EXPECT_EQ(readDebugString(setting), row.isRequested);
        EXPECT_EQ(environmentReads, row.reads);
        if (row.isRequested) {
            EXPECT_EQ(setting, row.value);
        }
    }
}

TEST(LoggingPlugin, ModuleReadsTheEnvironmentOnceAndEndsItsPluginsAtUnload) {
    const HMODULE module = LoadLibraryW(kModule);
    auto* const logInModule = exportOf<LogInModule>(module, "logInModule");
    {
        const Hook hook("_wgetenv_s", imported, countingGetenv, module);
        environmentReads = failingRead = 0;
        const auto plugin = preparePlugin();
        logInModule(kPlugin, 0, "not logged");
        EXPECT_EQ(environmentReads, 0);
        logInModule(nullptr, 1, "first");
        logInModule(nullptr, 1, "second");
        EXPECT_EQ(environmentReads, 1);  // it is not there
    }
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(takeEvents(), "pown:1first pown:1second ~p -pown gone ");
    EXPECT_EQ(GetModuleHandleW(kModule), nullptr);
}

}  // namespace
