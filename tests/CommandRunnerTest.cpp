// The children are the interpreter itself and CommandChild, which lies beside the test program.
// One that lives on is kept by a Leash, so that few tests depend on the clock.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "command/CommandRunner.h"
#include "command/Handle.h"
#include "support/Allocations.h"
#include "support/ImportPatch.h"
#include "support/ProcessFigures.h"

namespace {

using namespace Quend::Framework::Command;
using namespace std::chrono_literals;
using Result = std::tuple<bool, std::string>;
using Clock = std::chrono::steady_clock;

struct CommandRunner : testing::Test {
    CommandRunner() {
        std::string program(MAX_PATH, '\0');
        GetModuleFileNameA(nullptr, program.data(), MAX_PATH);
        SetCurrentDirectoryA(program.substr(0, program.rfind('\\')).c_str());
        SetEnvironmentVariableA("QUEND_TEST", "value");
    }
};

Result failed() { return {false, ""}; }
Result wrote(const std::string& output) { return {true, output}; }

std::shared_ptr<std::atomic<bool>> flag(bool isSet = false) {
    return std::make_shared<std::atomic<bool>>(isSet);
}

// What is left of the output of CommandChild's step "bytes".
std::string pattern(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) {
        bytes += static_cast<char>((i + i / 256) & 0xff);
    }
    std::erase(bytes, '\r');
    return bytes;
}

// Two events: the child waits for the first and then sets the second.
class Leash {
 public:
    std::string steps() const { return " await go" + name + " signal done" + name; }
    // True if the child lived until then, and goes on.
    bool release() const {
        const bool isEarly = isDone(0);
        SetEvent(go.get());
        return !isEarly && isDone(5000);
    }
    bool isDone(DWORD milliseconds) const {
        return WaitForSingleObject(done.get(), milliseconds) == WAIT_OBJECT_0;
    }

 private:
    static inline int made = 0;
    std::string name = std::to_string(GetCurrentProcessId()) + "." + std::to_string(++made);
    Handle go{CreateEventA(nullptr, TRUE, FALSE, ("go" + name).c_str())};
    Handle done{CreateEventA(nullptr, TRUE, FALSE, ("done" + name).c_str())};
};

// The runner's calls, and how their parameters are noted: h a handle, n a number, d a number
// behind a pointer, t a text, s the startup information.
constexpr std::pair<const char*, const char*> kFunctions[] = {{"CreatePipe", "  dn"},
                                                              {"SetHandleInformation", "hnn"},
                                                              {"SetNamedPipeHandleState", "hdnn"},
                                                              {"GetSystemDirectoryA", "tn"},
                                                              {"CreateProcessA", "ttnnnnnns"},
                                                              {"ReadFile", "h n"},
                                                              {"CloseHandle", "h"}};
enum Function : std::size_t { kCreatePipe = 0, kCreateProcess = 4, kRead = 5, kClose = 6 };

// Stands between one run and Windows: notes the calls, keeps the books of open handles, fails
// one call of the set-up, and sets the stop flag after so many bytes.
class Watch {
 public:
    using Argument = void*;  // as wide as any of theirs, so one signature fits all on x64
    using Arguments = std::array<Argument, 10>;

    Watch() : Watch(std::make_index_sequence<std::size(kFunctions)>()) {}

    std::vector<std::string> calls;
    std::map<HANDLE, std::string> open;
    std::size_t failing = 0;  // 1 is the first call of the set-up
    bool throws = false;
    std::size_t stopAfter = SIZE_MAX;
    std::shared_ptr<std::atomic<bool>> stopFlag = flag();

 private:
    template <std::size_t... functions>
    explicit Watch(std::index_sequence<functions...>) {
        current = this;
        (patches.push_back(std::make_unique<tests::ImportPatch>(
             kFunctions[functions].first, reinterpret_cast<void*>(&hook<functions>))),
         ...);
    }

    template <std::size_t function>
    static Argument hook(Argument a, Argument b, Argument c, Argument d, Argument e, Argument f,
                         Argument g, Argument h, Argument i, Argument j) {
        return current->call(function, {a, b, c, d, e, f, g, h, i, j});
    }

    Argument call(std::size_t function, const Arguments& a) {
        if (function == kCreatePipe) {
            thread = GetCurrentThreadId();
        }
        const bool isWatched =
            GetCurrentThreadId() == thread && (function != kClose || open.contains(a[0]));
        if (isWatched) {
            note(function, a);
            if (function <= kCreateProcess && ++setUpCalls == failing) {
                return throws ? throw std::runtime_error("planted") : nullptr;
            }
        }
        void* result = std::apply(*patches[function]->original<decltype(hook<0>)>(), a);
        if (isWatched) {
            keepBooks(function, a);
        }
        return result;
    }

    void note(std::size_t function, const Arguments& a) {
        std::string line = kFunctions[function].first;
        const auto add = [&](const auto& text) { line.append(" ").append(text); };
        const auto number = [&](std::uintptr_t n) { add(std::to_string(n & UINT32_MAX)); };
        std::size_t i = 0;
        for (const char* kind = kFunctions[function].second; *kind != '\0'; ++kind, ++i) {
            if (*kind == 'h') {
                add(open[a[i]]);
            } else if (*kind == 'n') {
                number(reinterpret_cast<std::uintptr_t>(a[i]));
            } else if (*kind == 'd') {
                number(*static_cast<DWORD*>(a[i]));
            } else if (*kind == 't') {
                add(static_cast<const char*>(a[i]));
            } else if (*kind == 's') {
                const auto& startup = *static_cast<STARTUPINFOA*>(a[i]);
                number(startup.dwFlags);
                add(startup.hStdInput == nullptr ? "none" : "some");
                add(open[startup.hStdOutput]);
                add(open[startup.hStdError]);
            }
        }
        if (calls.empty() || calls.back() != line) {  // it polls, who knows how often
            calls.push_back(line);
        }
    }

    void keepBooks(std::size_t function, const Arguments& a) {
        if (function == kCreatePipe) {
            const std::string pipe = open.empty() ? "errors" : "output";
            open[*static_cast<HANDLE*>(a[0])] = pipe + ".read";
            open[*static_cast<HANDLE*>(a[1])] = pipe + ".write";
        } else if (function == kCreateProcess) {
            open[static_cast<PROCESS_INFORMATION*>(a[9])->hProcess] = "process";
            open[static_cast<PROCESS_INFORMATION*>(a[9])->hThread] = "thread";
        } else if (function == kRead) {
            stopAfter -= std::min<std::size_t>(stopAfter, *static_cast<DWORD*>(a[3]));
            if (stopAfter == 0) {
                *stopFlag = true;
                calls.emplace_back("stop");
            }
        } else if (function == kClose) {
            open.erase(a[0]);
        }
    }

    static inline Watch* current = nullptr;
    std::size_t setUpCalls = 0;
    std::atomic<DWORD> thread{0};  // the runner's, from its first call on
    std::vector<std::unique_ptr<tests::ImportPatch>> patches;
};

TEST(Handle, HasOneOwner) {
    EXPECT_EQ(Handle(INVALID_HANDLE_VALUE).get(), nullptr);
    const std::size_t before = tests::handleCount();
    {
        Handle first(CreateEventA(nullptr, TRUE, FALSE, nullptr));
        const void* const event = first.get();
        Handle& same = first;
        first = std::move(same);
        EXPECT_EQ(first.get(), event);
        Handle second(CreateEventA(nullptr, TRUE, FALSE, nullptr));
        second = std::move(first);
        EXPECT_EQ(second.get(), event);
        EXPECT_EQ(tests::handleCount(), before + 1);
    }
    EXPECT_EQ(tests::handleCount(), before);
}

TEST_F(CommandRunner, ReturnsWhatTheInterpreterWrites) {
    const std::pair<std::string, Result> cases[] = {
        {"echo a&echo b", wrote("a\nb\n")},
        {"echo %QUEND_TEST%", wrote("value\n")},
        {R"(echo "a b" 100%)", wrote("\"a b\" 100%\n")},
        {R"(CommandChild say "a b")", wrote("a b")},
        {R"(""CommandChild" say "a b"")", wrote("a b")},
        {"CommandChild say x^&y", wrote("x&y")},
        {"CommandChild say lost|CommandChild say got", wrote("got")},
        {"echo a>nul", wrote("")},
        {"", wrote("")},
        {"echo error 1>&2", wrote("")},
        {"there-is-no-such-command", wrote("")},
        {"CommandChild bytes 1000 1>&2&CommandChild say x", wrote("x")},
        {"echo " + std::string(7995, 'x'), wrote(std::string(7995, 'x') + '\n')},
        {"echo " + std::string(33'000, 'x'), failed()},
        {std::string("echo a\0b", 8), wrote("a\n")},
    };
    for (const auto& [command, result] : cases) {
        EXPECT_EQ(runCommand(command), result) << command.substr(0, 100);
    }
    for (const std::size_t size : {0U, 1U, 127U, 128U, 129U, 256U, 1'000'000U}) {
        // Not EXPECT_EQ, which would print a megabyte.
        EXPECT_TRUE(runCommand("CommandChild bytes " + std::to_string(size)) ==
                    wrote(pattern(size)))
            << size;
    }
}

// The interpreter holds the output while it waits for its command: only a process that is left
// behind can end it early.
TEST_F(CommandRunner, OutputEndsWithItsLastHolder) {
    const std::array<const char*, 2> holders[] = {{"CommandChild leave say a", " say b"},
                                                  {"CommandChild say a close", "&echo b"}};
    for (const auto& holder : holders) {
        const Leash leash;
        auto held = std::async(std::launch::async,
                               [&] { return runCommand(holder[0] + leash.steps() + holder[1]); });
        EXPECT_EQ(held.wait_for(500ms), std::future_status::timeout);
        EXPECT_TRUE(leash.release());
        EXPECT_EQ(std::get<1>(held.get()).substr(0, 2), "ab");
    }
    const Leash leash;
    EXPECT_EQ(runCommand("CommandChild leave say a close" + leash.steps()), wrote("a"));
    EXPECT_TRUE(leash.release());
}

// Nobody reads standard error: its writer stands still until the reader gives up, and goes on.
TEST_F(CommandRunner, TooMuchStandardErrorStandsStill) {
    const Leash leash;
    const auto stopFlag = flag();
    auto result = std::async(std::launch::async, [&] {
        return executeCommand(
            "CommandChild say a&CommandChild bytes 100000 1>&2&CommandChild say b" + leash.steps(),
            stopFlag);
    });
    EXPECT_EQ(result.wait_for(1s), std::future_status::timeout);
    *stopFlag = true;
    EXPECT_EQ(result.get(), wrote("a"));
    EXPECT_TRUE(leash.release());
}

TEST_F(CommandRunner, AsksWindowsForExactlyThisUntilStopped) {
    const Leash leash;
    const std::string command = "CommandChild say abc" + leash.steps();
    Watch watch;
    watch.stopAfter = 3;
    EXPECT_EQ(executeCommand(command, watch.stopFlag), wrote("abc"));
    EXPECT_TRUE(leash.release()) << "the child was killed, or waited for";
    const std::vector<std::string> expected = {
        "CreatePipe 24 0",
        "SetHandleInformation errors.read 1 0",
        "CreatePipe 24 0",
        "SetHandleInformation output.read 1 0",
        "SetNamedPipeHandleState errors.read 1 0 0",
        "SetNamedPipeHandleState output.read 1 0 0",
        "GetSystemDirectoryA  4096",
        R"(CreateProcessA C:\windows\system32\cmd.exe /c )" + command +
            " 0 0 1 134217728 0 0 256 none output.write errors.write",
        "CloseHandle output.write",
        "CloseHandle errors.write",
        "ReadFile output.read 128",
        "stop",
        "CloseHandle process",
        "CloseHandle thread",
        "CloseHandle output.read",
        "CloseHandle errors.read"};
    EXPECT_EQ(watch.calls, expected);

    watch.calls.clear();
    EXPECT_EQ(executeCommand(command, watch.stopFlag), wrote("")) << "started, but not read";
    EXPECT_EQ(watch.calls.size(), expected.size() - 2);
}

TEST_F(CommandRunner, NoRunLeavesAHandleOpen) {
    const auto run = [](std::size_t failing, bool throws) {
        Watch watch;
        watch.failing = failing;
        watch.throws = throws;
        const bool isGood = failing == 0 || failing > 8;  // the set-up is eight calls
        EXPECT_EQ(runCommand("echo x"), isGood ? wrote("x\n") : failed()) << failing << throws;
        EXPECT_TRUE(watch.open.empty()) << failing << throws;
    };
    run(9, false);
    run(1, true);
    const std::size_t before = tests::handleCount();
    for (std::size_t i = 0; i < 200; ++i) {
        run(i % 3 == 0 ? 0 : 1 + i % 8, i / 8 % 2 == 0);
    }
    // The runtime's threads open one or two of their own, once; a leak on any one path is eight.
    EXPECT_EQ(tests::handleCount(), before);
}

TEST_F(CommandRunner, FailedAllocationLeavesNoHandleOpen) {
    executeCommand("echo x", flag());
    tests::failEachAllocation([](long, auto fail) {
        const std::size_t before = tests::handleCount();
        const auto stopFlag = flag();
        fail([&] {
            EXPECT_EQ(executeCommand("CommandChild bytes 300", stopFlag), wrote(pattern(300)));
        });
        EXPECT_EQ(tests::handleCount(), before);
        return 0L;
    });
}

TEST_F(CommandRunner, ThreadsGetTheirOwnOutput) {
    std::array<std::future<Result>, 8> results;
    for (std::size_t i = 0; i < results.size(); ++i) {
        results[i] = std::async(std::launch::async, [i] {
            return runCommand("CommandChild bytes 9999 say " + std::to_string(i));
        });
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i].get(), wrote(pattern(9999) + std::to_string(i)));
    }
}

decltype(GetSystemDirectoryA)* getSystemDirectory = nullptr;
std::atomic<int> starts{0};

UINT WINAPI hesitateOnce(LPSTR buffer, UINT size) {
    if (++starts == 1) {
        Sleep(300);
    }
    return getSystemDirectory(buffer, size);
}

// The quick command is held up between its pipes and its process: a slow one that started just
// then would inherit an end of those pipes and keep it.
TEST_F(CommandRunner, QuickCommandDoesNotLastAsLongAsASlowOne) {
    const Leash leash;
    const tests::ImportPatch patch("GetSystemDirectoryA", reinterpret_cast<void*>(&hesitateOnce));
    getSystemDirectory = patch.original<decltype(GetSystemDirectoryA)>();
    auto quick = std::async(std::launch::async, [] { return runCommand("echo quick"); });
    while (starts == 0) {
        Sleep(1);
    }
    auto slow = std::async(std::launch::async,
                           [&] { return runCommand("CommandChild say slow" + leash.steps()); });
    EXPECT_EQ(quick.wait_for(5s), std::future_status::ready);
    EXPECT_TRUE(leash.release());
    EXPECT_EQ(quick.get(), wrote("quick\n"));
    EXPECT_EQ(slow.get(), wrote("slow"));
}

TEST_F(CommandRunner, GivesUpAfterSixtySeconds) {
    const Leash leash;
    const auto start = Clock::now();
    EXPECT_EQ(runCommand("CommandChild say lost" + leash.steps()), failed());
    EXPECT_GE(Clock::now() - start, 60s);
    EXPECT_LT(Clock::now() - start, 63s);
    EXPECT_TRUE(leash.release()) << "the child was killed, or waited for";
}

}  // namespace
