#include "support/Test.h"

#include <chrono>
#include <filesystem>

#include "command/CommandRunner.h"
#include "command/Handle.h"
#include "support/Allocations.h"
#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"

namespace {

using namespace Quend::Framework::Command;
using namespace std::chrono_literals;
using Result = std::tuple<bool, std::string>;
using Flag = std::shared_ptr<std::atomic<bool>>;

// Commands find CommandChild in the working directory.
struct CommandRunner : testing::Test {
    static void SetUpTestSuite() {
        std::wstring program(MAX_PATH, L'\0');
        GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
        std::filesystem::current_path(std::filesystem::path(program).parent_path());
    }
};

Result failed() { return {false, ""}; }
Result wrote(const std::string& output) { return {true, output}; }

Flag flag(bool isSet = false) { return std::make_shared<std::atomic<bool>>(isSet); }

// As "CommandChild bytes SIZE".
Result wroteBytes(std::size_t size) {
    std::string output;
    for (std::size_t i = 0; i < size; ++i) {
        output += i % 251 == '\r' ? "" : std::string(1, static_cast<char>(i % 251));
    }
    return {true, output};
}

Handle makeEvent(const char* name = nullptr) {
    return Handle(CreateEventA(nullptr, TRUE, FALSE, name));
}

void await(const Handle& event) { WaitForSingleObject(event.get(), INFINITE); }

// Two events, for a child that sets one, waits for the other and then does the rest.
struct Leash {
    static inline int made = 0;
    const std::string name = std::to_string(GetCurrentProcessId()) + "." + std::to_string(++made);
    const std::string step = " await " + name;
    const Handle here = makeEvent(("here" + name).c_str());
    const Handle go = makeEvent(("go" + name).c_str());
};

TEST(Handle, HasOneOwner) {
    EXPECT_EQ(Handle().get(), nullptr);
    EXPECT_EQ(Handle(INVALID_HANDLE_VALUE).get(), nullptr);
    const std::size_t before = tests::handleCount();
    {
        Handle first = makeEvent();
        Handle& same = first;
        first = std::move(same);
        Handle second = makeEvent();
        second = std::move(first);
        EXPECT_TRUE(SetEvent(second.get()));
        EXPECT_EQ(tests::handleCount(), before + 1);
    }
    EXPECT_EQ(tests::handleCount(), before);
}

// Microsoft's pages disagree about the rights of the handles that CreatePipe gives.
TEST(CommandRunnerPlatform, TheReadEndOfAPipeCanBeMadeNonBlocking) {
    HANDLE ends[2];
    ASSERT_TRUE(CreatePipe(&ends[0], &ends[1], nullptr, 0));
    const Handle owners[] = {Handle(ends[0]), Handle(ends[1])};
    DWORD mode = PIPE_NOWAIT;
    EXPECT_TRUE(SetNamedPipeHandleState(ends[0], &mode, nullptr, nullptr))
        << "Windows refuses PIPE_NOWAIT for the read end of CreatePipe with error "
        << GetLastError() << ", so no command can be run";
}

// All at once: each gets its own output. One leaves a child behind that outlives the interpreter,
// which holds the output while it waits for its command; the output ends with its last holder.
TEST_F(CommandRunner, ReturnsWhatTheInterpreterAndItsChildrenWrite) {
    const Leash leash;
    const std::pair<std::string, Result> cases[] = {
        {"CommandChild bytes 200000", wroteBytes(200'000)},
        {"CommandChild bytes 90000", wroteBytes(90'000)},
        {"echo a&echo b", wrote("a\nb\n")},
        {R"(""CommandChild" say "a b"")", wrote("a b")},
        {"CommandChild leave say a" + leash.step + " say b", wrote("ab")},
        {"echo error 1>&2&CommandChild say x", wrote("x")},
        {"", wrote("")},
        {"there-is-no-such-command", wrote("")},
        {"echo " + std::string(7995, 'x'), wrote(std::string(7995, 'x') + '\n')},
        {"echo " + std::string(33'000, 'x'), failed()},
        {std::string("echo a\0b", 8), wrote("a\n")},
    };
    std::vector<std::future<Result>> results;
    for (const auto& [command, result] : cases) {
        results.push_back(std::async(std::launch::async, runCommand, command));
    }
    await(leash.here);
    SetEvent(leash.go.get());
    for (std::size_t i = 0; i < results.size(); ++i) {
        // Not EXPECT_EQ, which would print all of a long output.
        EXPECT_TRUE(results[i].get() == cases[i].second) << cases[i].first.substr(0, 100);
    }
}

// What Windows may refuse although Wine accepts it, and what no output shows. Only the broken pipe,
// with nothing read, is the end of the output, or else the flag.
TEST_F(CommandRunner, AsksWindowsForExactlyThis) {
    std::string systemDirectory(MAX_PATH, '\0');
    systemDirectory.resize(GetSystemDirectoryA(systemDirectory.data(), MAX_PATH));
    std::vector<HANDLE> readEnds;
    const tests::Hook createPipe(
        "CreatePipe", CreatePipe,
        [&](auto real, HANDLE* readEnd, auto writeEnd, SECURITY_ATTRIBUTES* security, DWORD size) {
            EXPECT_EQ(security->nLength, sizeof(SECURITY_ATTRIBUTES));
            EXPECT_TRUE(security->lpSecurityDescriptor == nullptr && size == 0);
            const BOOL isMade = real(readEnd, writeEnd, security, size);
            readEnds.push_back(*readEnd);
            return isMade;
        });
    const tests::Hook createProcess(
        "CreateProcessA", CreateProcessA,
        [&](auto, const char* application, const char* command, auto, auto, auto, DWORD flags,
            void* environment, const char* directory, STARTUPINFOA* startup, auto) {
            EXPECT_EQ(application, systemDirectory + "\\cmd.exe");
            EXPECT_STREQ(command, R"(/c echo "x")");
            EXPECT_EQ(flags, DWORD{CREATE_NO_WINDOW});
            EXPECT_TRUE(environment == nullptr && directory == nullptr);
            EXPECT_EQ(startup->cb, sizeof(STARTUPINFOA));
            EXPECT_EQ(startup->dwFlags, DWORD{STARTF_USESTDHANDLES});
            EXPECT_TRUE(startup->hStdInput == nullptr && startup->hStdError != nullptr);
            EXPECT_TRUE(startup->lpReserved == nullptr && startup->lpReserved2 == nullptr);
            EXPECT_TRUE(startup->lpDesktop == nullptr && startup->lpTitle == nullptr);
            for (HANDLE readEnd : readEnds) {
                DWORD inherited = 1;
                DWORD mode = 0;
                EXPECT_TRUE(GetHandleInformation(readEnd, &inherited) && inherited == 0);
                GetNamedPipeHandleStateA(readEnd, &mode, nullptr, nullptr, nullptr, nullptr, 0);
                EXPECT_EQ(mode, DWORD{PIPE_NOWAIT});
            }
            return TRUE;
        });
    const std::vector<std::tuple<BOOL, std::string, DWORD>> answers = {
        {TRUE, "a", 0},
        {TRUE, "", 0},  // a child that writes nothing is no end
        {TRUE, "", ERROR_BROKEN_PIPE},
        {FALSE, "", ERROR_NO_DATA},
        {FALSE, "", ERROR_ACCESS_DENIED},
        {FALSE, "\rb", ERROR_BROKEN_PIPE},
        {FALSE, "c\r", ERROR_MORE_DATA},
        {FALSE, "", ERROR_BROKEN_PIPE},
    };
    std::size_t reads = 0;
    std::size_t readsToStop = 0;
    const Flag stopFlag = flag();
    const tests::Hook read("ReadFile", ReadFile,
                           [&](auto, HANDLE, void* buffer, DWORD size, DWORD* count, auto) {
                               EXPECT_EQ(size, 128U);
                               const auto& [isRead, text, error] = answers.at(reads++);
                               text.copy(static_cast<char*>(buffer), text.size());
                               *count = static_cast<DWORD>(text.size());
                               *stopFlag = reads == readsToStop;
                               SetLastError(error);
                               return isRead;
                           });
    const tests::Hook sleep("Sleep", Sleep, [](auto, auto) {
        ADD_FAILURE() << "nothing to wait for: the output is polled";
    });
    EXPECT_EQ(executeCommand(R"(echo "x")", stopFlag), wrote("abc"));
    EXPECT_EQ(std::exchange(reads, 0), answers.size());
    readEnds.clear();
    readsToStop = 6;
    EXPECT_EQ(executeCommand(R"(echo "x")", stopFlag), wrote("ab"));
    EXPECT_EQ(reads, readsToStop);
    EXPECT_EQ(readEnds.size(), 2U);
}

// The preparation is eight calls.
TEST_F(CommandRunner, FailingPlatformCallsLeaveNothingBehind) {
    int calls = 0;
    int failing = 0;
    const auto fail = [&](auto real, auto... arguments) {
        return ++calls == failing ? decltype(real(arguments...)){} : real(arguments...);
    };
    const tests::Hook pipe("CreatePipe", CreatePipe, fail);
    const tests::Hook keep("SetHandleInformation", SetHandleInformation, fail);
    const tests::Hook state("SetNamedPipeHandleState", SetNamedPipeHandleState, fail);
    const tests::Hook directory("GetSystemDirectoryA", GetSystemDirectoryA, fail);
    const tests::Hook process("CreateProcessA", CreateProcessA, fail);
    EXPECT_EQ(executeCommand("echo x", flag(true)), wrote("")) << "started, but not read";
    EXPECT_EQ(std::exchange(calls, 0), 8);
    const std::size_t handlesBefore = tests::handleCount();
    const long blocksBefore = tests::liveBlocks;
    for (failing = 1; failing <= 9; ++failing) {
        EXPECT_EQ(executeCommand("echo x", flag()), failing <= 8 ? failed() : wrote("x\n"));
        EXPECT_EQ(std::exchange(calls, 0), std::min(failing, 8)) << "went on after a failure";
        EXPECT_EQ(tests::handleCount(), handlesBefore) << failing;
        EXPECT_EQ(tests::liveBlocks, blocksBefore) << failing;
    }
}

TEST_F(CommandRunner, FailedAllocationLeavesNoHandleOpen) {
    tests::failEachAllocation([&](long, auto fail) {
        const std::size_t before = tests::handleCount();
        const std::string command = "CommandChild bytes 300";
        const Flag stopFlag = flag();
        Result result;
        if (!fail([&] { result = executeCommand(command, stopFlag); })) {
            EXPECT_EQ(result, wroteBytes(300));
        }
        EXPECT_EQ(tests::handleCount(), before);
    });
}

TEST_F(CommandRunner, AnExceptionInTheBackgroundIsAFailure) {
    std::optional<tests::AllocationFault> fault;
    const tests::Hook pipe("CreatePipe", CreatePipe, [&](auto real, auto... arguments) {
        fault.emplace(1, true);  // on the background thread
        return real(arguments...);
    });
    EXPECT_EQ(runCommand("echo x"), failed());
    EXPECT_TRUE(tests::AllocationFault::happened());
}

// A command that started between the pipes and the process of another would hold its write ends.
TEST_F(CommandRunner, OneThatWaitsForAnotherToStartEndsAtItsFlag) {
    const Handle isStarting = makeEvent();
    const Handle go = makeEvent();
    HANDLE writeEnd = nullptr;  // of the first one
    const tests::Hook createProcess("CreateProcessA", CreateProcessA, [&](auto, auto... arguments) {
        if (writeEnd == nullptr) {
            writeEnd = std::get<8>(std::tuple(arguments...))->hStdError;
            SetEvent(isStarting.get());
            await(go);
        }
        return TRUE;
    });
    int pipes = 0;
    const tests::Hook createPipe("CreatePipe", CreatePipe, [&](auto real, auto... arguments) {
        DWORD flags = 0;
        EXPECT_FALSE(pipes == 2 && GetHandleInformation(writeEnd, &flags)) << "still open";
        ++pipes;
        return real(arguments...);
    });
    std::function<void()> whileWaiting = [] {};  // the runtime sleeps too, to start a thread
    const tests::Hook sleep("Sleep", Sleep, [&](auto, auto) { whileWaiting(); });

    auto first = std::async(std::launch::async, executeCommand, "", flag());
    await(isStarting);
    const Flag stopFlag = flag();
    whileWaiting = [&] { *stopFlag = true; };
    EXPECT_EQ(executeCommand("", stopFlag), failed());
    EXPECT_EQ(executeCommand("", stopFlag), failed()) << "the flag was true before it waited";
    EXPECT_EQ(pipes, 2) << "it prepared to start";
    whileWaiting = [&] { SetEvent(go.get()); };
    EXPECT_EQ(executeCommand("", flag()), wrote(""));
    EXPECT_EQ(pipes, 4);
    SetEvent(go.get());
    EXPECT_EQ(first.get(), wrote(""));
}

// Windows writes nothing into a buffer that is too small, and answers with the size it needs. The
// command would be "\cmd.exe" then, from the root of the drive.
TEST_F(CommandRunner, NeverStartsAnInterpreterWithoutItsDirectory) {
    int started = 0;
    const tests::Hook process("CreateProcessA", CreateProcessA, [&](auto...) {
        ++started;
        return TRUE;
    });
    for (const UINT answer : {0U, 4096U, 4097U}) {
        const tests::Hook directory("GetSystemDirectoryA", GetSystemDirectoryA,
                                    [&](auto...) { return answer; });
        EXPECT_EQ(executeCommand("echo x", flag()), failed()) << answer;
    }
    EXPECT_EQ(started, 0);
}

#ifndef _MSC_VER  // whose locks need no memory
// The first lock of a future allocates. A child that never ends is still running when that fails.
TEST_F(CommandRunner, StopsReadingWhenTheWaitForItFails) {
    const tests::Hook process("CreateProcessA", CreateProcessA, [](auto...) { return TRUE; });
    const DWORD caller = GetCurrentThreadId();
    bool isTaskStarted = false;
    std::atomic<bool> hasFailed = false;
    const tests::Hook thread("_beginthreadex", _beginthreadex, [&](auto real, auto... arguments) {
        const auto result = real(arguments...);
        isTaskStarted = true;
        return result;
    });
    const tests::Hook memory("malloc", std::malloc, [&](auto real, std::size_t size) -> void* {
        if (GetCurrentThreadId() == caller && isTaskStarted && !hasFailed.exchange(true)) {
            return nullptr;
        }
        return real(size);
    });
    const auto giveUp = std::chrono::steady_clock::now() + 20s;
    std::atomic<bool> isStopped = true;
    const tests::Hook read("ReadFile", ReadFile, [&](auto...) {
        isStopped = std::chrono::steady_clock::now() < giveUp;
        SetLastError(isStopped ? ERROR_NO_DATA : ERROR_BROKEN_PIPE);
        return FALSE;
    });
    EXPECT_THROW(runCommand("echo x"), std::system_error);
    EXPECT_TRUE(hasFailed);
    EXPECT_TRUE(isStopped) << "the caller waited for the end of the output";
}
#endif

// A flag whose first reader runs `afterRead` right behind the instruction that reads it. Windows
// reports the first access to a guarded page, and the trap flag stops the thread one step later.
class WatchedFlag {
 public:
    explicit WatchedFlag(std::function<void()> action) {
        afterRead = std::move(action);
        handler = AddVectoredExceptionHandler(1, &onException);
        void* const page = VirtualAlloc(nullptr, 1, MEM_COMMIT, PAGE_READWRITE);
        value = new (page) std::atomic<bool>(false);
        DWORD before = 0;
        VirtualProtect(page, 1, PAGE_READWRITE | PAGE_GUARD, &before);
    }
    ~WatchedFlag() {
        RemoveVectoredExceptionHandler(handler);
        VirtualFree(value, 0, MEM_RELEASE);
    }
    WatchedFlag(WatchedFlag&&) = delete;

    void set() { *value = true; }
    Flag share() const {
        return {value, [](auto*) {}};
    }

 private:
    static LONG CALLBACK onException(EXCEPTION_POINTERS* exception) {
        const DWORD code = exception->ExceptionRecord->ExceptionCode;
        if (code == STATUS_GUARD_PAGE_VIOLATION) {
            exception->ContextRecord->EFlags |= 0x100;  // the processor's trap flag
            return EXCEPTION_CONTINUE_EXECUTION;
        }
        if (code == STATUS_SINGLE_STEP) {
            afterRead();
            return EXCEPTION_CONTINUE_EXECUTION;
        }
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static inline std::function<void()> afterRead;
    std::atomic<bool>* value;
    void* handler;
};

// The waiting command reads false. Then, before it goes on, its flag becomes true, and afterwards
// the other command has started.
TEST_F(CommandRunner, DoesNotStartIfItsFlagWasTrueBeforeItsTurn) {
    const Handle isStarting = makeEvent();
    const Handle go = makeEvent();
    std::atomic<int> started = 0;
    const tests::Hook createProcess("CreateProcessA", CreateProcessA, [&](auto...) {
        if (++started == 1) {
            SetEvent(isStarting.get());
            await(go);
        }
        return TRUE;
    });
    std::future<Result> first = std::async(std::launch::async, executeCommand, "", flag());
    await(isStarting);
    int reads = 0;
    WatchedFlag* watched = nullptr;
    WatchedFlag stopFlag([&] {
        ++reads;
        watched->set();
        SetEvent(go.get());
        first.wait();
    });
    watched = &stopFlag;
    EXPECT_EQ(executeCommand("", stopFlag.share()), failed());
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(started, 1);
}

// The second child blocks in its standard error until then.
TEST_F(CommandRunner, GivesUpAfterSixtySeconds) {
    const Leash leash;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(runCommand("CommandChild say lost&CommandChild bytes 100000 1>&2&CommandChild" +
                         leash.step),
              failed());
    const auto taken = std::chrono::steady_clock::now() - start;
    await(leash.here);  // the child was neither killed nor waited for
    SetEvent(leash.go.get());
    EXPECT_GE(taken, 60s);
    EXPECT_LT(taken, 75s);  // all but the minute is the start of one process
}

}  // namespace
