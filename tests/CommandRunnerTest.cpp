#include <chrono>
#include <filesystem>

#include "command/CommandRunner.h"
#include "command/Handle.h"
#include "support/Allocations.h"
#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"
#include "support/Test.h"

namespace {

using namespace Quend::Framework::Command;
using namespace std::chrono_literals;
using Result = std::tuple<bool, std::string>;
using Flag = std::shared_ptr<std::atomic<bool>>;

const Result kFailed = {false, ""};
Result wrote(const std::string& output) { return {true, output}; }

Flag makeFlag(bool isSet = false) { return std::make_shared<std::atomic<bool>>(isSet); }

Handle makeEvent(const std::string& name = "") {
    return Handle(CreateEventA(nullptr, TRUE, FALSE, name.empty() ? nullptr : name.c_str()));
}
void await(const Handle& event) { WaitForSingleObject(event.get(), INFINITE); }

// Commands find CommandChild in the working directory.
struct CommandRunner : testing::Test {
    static void SetUpTestSuite() {
        std::wstring program(MAX_PATH, L'\0');
        GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
        std::filesystem::current_path(std::filesystem::path(program).parent_path());
    }
};

TEST_F(CommandRunner, RunsACommandAndReturnsWhatItPrints) {
    const auto [isStarted, output] = runCommand("echo Hello");
    EXPECT_TRUE(isStarted);
    EXPECT_EQ(output, "Hello\n");  // without the carriage return of the interpreter

    // Several commands, as on one line of a batch file.
    EXPECT_EQ(runCommand("echo apples&echo pears"), wrote("apples\npears\n"));

    // A file in the working directory of this process.
    EXPECT_EQ(runCommand("echo bread>shopping.txt"), wrote(""));
    EXPECT_EQ(runCommand("type shopping.txt"), wrote("bread\n"));
    EXPECT_EQ(runCommand("del shopping.txt"), wrote(""));

    // The interpreter complains on its standard error. The complaint and the exit code are dropped.
    EXPECT_EQ(runCommand("there-is-no-such-command"), wrote(""));
    EXPECT_EQ(runCommand("exit 1"), wrote(""));
}

TEST_F(CommandRunner, HandsTheCommandToTheInterpreterAsItIs) {
    const struct {
        std::string command;
        Result result;
    } cases[] = {
        {.command = "", .result = wrote("")},
        {.command = R"(""CommandChild" say "a b"")", .result = wrote("a b")},
        {.command = "echo error 1>&2&CommandChild say x", .result = wrote("x")},
        {.command = std::string("echo a\0b", 8), .result = wrote("a\n")},
        {.command = "echo " + std::string(7995, 'x'),
         .result = wrote(std::string(7995, 'x') + '\n')},
        {.command = "echo " + std::string(33'000, 'x'), .result = kFailed},
    };
    for (const auto& each : cases) {
        // Not EXPECT_EQ, which would print all of a long output.
        EXPECT_TRUE(runCommand(each.command) == each.result) << each.command.substr(0, 100);
    }
}

// The second child blocks in its standard error until then.
TEST_F(CommandRunner, GivesUpAfterSixtySeconds) {
    const std::string name = std::to_string(GetCurrentProcessId());
    const Handle arrived = makeEvent("arrived" + name);
    const Handle goOn = makeEvent("goOn" + name);
    const std::string command =
        "CommandChild say lost&CommandChild bytes 100000 1>&2&CommandChild await " + name;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(runCommand(command), kFailed);
    const auto taken = std::chrono::steady_clock::now() - start;
    await(arrived);  // the child was neither killed nor waited for
    SetEvent(goOn.get());
    EXPECT_GE(taken, 60s);
    EXPECT_LT(taken, 75s);  // all but the minute is the start of one process
}

// The tests below look at the calls to Windows: Windows may refuse what Wine accepts. Where
// CreateProcessA is replaced there is no child, and the output ends at once.

TEST_F(CommandRunner, StartsTheInterpreterWithTheWriteEndsOfItsPipes) {
    std::string systemDirectory(MAX_PATH, '\0');
    systemDirectory.resize(GetSystemDirectoryA(systemDirectory.data(), MAX_PATH));
    std::vector<HANDLE> readEnds;
    std::vector<HANDLE> writeEnds;
    const tests::Hook createPipe("CreatePipe", CreatePipe,
                                 [&](auto real, HANDLE* readEnd, HANDLE* writeEnd, auto... rest) {
                                     const BOOL isMade = real(readEnd, writeEnd, rest...);
                                     readEnds.push_back(*readEnd);
                                     writeEnds.push_back(*writeEnd);
                                     return isMade;
                                 });
    const tests::Hook createProcess(
        "CreateProcessA", CreateProcessA,
        [&](auto, const char* application, const char* commandLine, auto*, auto*,
            BOOL inheritsHandles, DWORD creationFlags, void*, const char* directory,
            STARTUPINFOA* startup, auto*) {
            EXPECT_EQ(application, systemDirectory + "\\cmd.exe");
            EXPECT_STREQ(commandLine, R"(/c echo "x")");
            EXPECT_TRUE(inheritsHandles);
            EXPECT_EQ(creationFlags, DWORD{CREATE_NO_WINDOW});
            EXPECT_EQ(directory, nullptr);
            EXPECT_EQ(startup->cb, sizeof(STARTUPINFOA));
            EXPECT_EQ(startup->dwFlags, DWORD{STARTF_USESTDHANDLES});
            EXPECT_EQ(startup->hStdInput, nullptr);
            EXPECT_EQ(writeEnds, (std::vector{startup->hStdError, startup->hStdOutput}));
            for (HANDLE readEnd : readEnds) {
                DWORD flags = 0;
                EXPECT_TRUE(GetHandleInformation(readEnd, &flags));
                EXPECT_EQ(flags, 0U);
                DWORD mode = 0;
                GetNamedPipeHandleStateA(readEnd, &mode, nullptr, nullptr, nullptr, nullptr, 0);
                EXPECT_EQ(mode, DWORD{PIPE_NOWAIT});
            }
            return TRUE;
        });
    const tests::Hook read("ReadFile", ReadFile, [&](auto real, auto... arguments) {
        for (HANDLE writeEnd : writeEnds) {
            DWORD flags = 0;
            EXPECT_FALSE(GetHandleInformation(writeEnd, &flags)) << "still open";
        }
        return real(arguments...);
    });
    EXPECT_EQ(executeCommand(R"(echo "x")", makeFlag()), wrote(""));
    EXPECT_EQ(writeEnds.size(), 2U);
}

// Only the broken pipe, with nothing read, is the end of the output.
TEST_F(CommandRunner, ReadsUntilThePipeIsBroken) {
    const struct Answer {
        BOOL isRead;
        std::string text;
        DWORD error;
    } answers[] = {
        {.isRead = TRUE, .text = "a", .error = ERROR_SUCCESS},
        {.isRead = TRUE, .text = "", .error = ERROR_SUCCESS},  // a child may write nothing
        {.isRead = TRUE, .text = "", .error = ERROR_BROKEN_PIPE},
        {.isRead = FALSE, .text = "", .error = ERROR_NO_DATA},
        {.isRead = FALSE, .text = "\rb", .error = ERROR_BROKEN_PIPE},
        {.isRead = FALSE, .text = "c\r", .error = ERROR_MORE_DATA},
        {.isRead = FALSE, .text = "", .error = ERROR_BROKEN_PIPE},
    };
    const tests::Hook process("CreateProcessA", CreateProcessA, [](auto...) { return TRUE; });
    std::size_t reads = 0;
    const tests::Hook read("ReadFile", ReadFile,
                           [&](auto, HANDLE, void* buffer, DWORD size, DWORD* count, auto*) {
                               EXPECT_EQ(size, 128U);
                               const Answer& answer = answers[reads];
                               ++reads;
                               answer.text.copy(static_cast<char*>(buffer), size);
                               *count = static_cast<DWORD>(answer.text.size());
                               SetLastError(answer.error);
                               return answer.isRead;
                           });
    EXPECT_EQ(executeCommand("echo x", makeFlag()), wrote("abc"));
    EXPECT_EQ(reads, std::size(answers));
}

TEST_F(CommandRunner, StopsReadingOnceItsFlagIsTrue) {
    const tests::Hook process("CreateProcessA", CreateProcessA, [](auto...) { return TRUE; });
    const Flag stopFlag = makeFlag();
    const tests::Hook read("ReadFile", ReadFile,
                           [&](auto, HANDLE, void* buffer, DWORD, DWORD* count, auto*) {
                               *static_cast<char*>(buffer) = 'x';
                               *count = 1;
                               *stopFlag = true;
                               return TRUE;
                           });
    EXPECT_EQ(executeCommand("echo x", stopFlag), wrote("x"));
    EXPECT_EQ(executeCommand("echo x", stopFlag), wrote("")) << "started, but not read";
}

// Windows writes nothing into a buffer that is too small, and answers with the size it needs. The
// program would be "\cmd.exe" then, in the root of the drive.
TEST_F(CommandRunner, StartsNothingIfTheSystemDirectoryDoesNotFit) {
    const tests::Hook process("CreateProcessA", CreateProcessA, [](auto...) { return TRUE; });
    const tests::Hook directory("GetSystemDirectoryA", GetSystemDirectoryA,
                                [](auto...) { return 4096U; });
    EXPECT_EQ(executeCommand("echo x", makeFlag()), kFailed);
}

// A command makes eight calls before it reads.
TEST_F(CommandRunner, FailingPlatformCallsLeaveNothingBehind) {
    int calls = 0;
    int failing = 0;
    const auto failOne = [&](auto real, auto... arguments) -> decltype(real(arguments...)) {
        ++calls;
        if (calls == failing) {
            return 0;
        }
        return real(arguments...);
    };
    const tests::Hook pipe("CreatePipe", CreatePipe, failOne);
    const tests::Hook keep("SetHandleInformation", SetHandleInformation, failOne);
    const tests::Hook state("SetNamedPipeHandleState", SetNamedPipeHandleState, failOne);
    const tests::Hook directory("GetSystemDirectoryA", GetSystemDirectoryA, failOne);
    const tests::Hook process("CreateProcessA", CreateProcessA, failOne);

    EXPECT_EQ(executeCommand("echo x", makeFlag()), wrote("x\n"));
    EXPECT_EQ(calls, 8);
    const std::size_t handlesBefore = tests::handleCount();
    const long blocksBefore = tests::liveBlocks;
    for (failing = 1; failing <= 8; ++failing) {
        calls = 0;
        EXPECT_EQ(executeCommand("echo x", makeFlag()), kFailed) << failing;
        EXPECT_EQ(calls, failing) << "went on after a failure";
        EXPECT_EQ(tests::handleCount(), handlesBefore) << failing;
        EXPECT_EQ(tests::liveBlocks, blocksBefore) << failing;
    }
}

// The child is this very process, which writes its output and closes nothing.
TEST_F(CommandRunner, FailedAllocationLeavesNoHandleOpen) {
    const std::string output(300, 'x');
    const tests::Hook createProcess(
        "CreateProcessA", CreateProcessA,
        [&](auto, auto*, auto*, auto*, auto*, BOOL, DWORD, void*, auto*, STARTUPINFOA* startup,
            PROCESS_INFORMATION* child) {
            child->hProcess = OpenProcess(SYNCHRONIZE, FALSE, GetCurrentProcessId());
            child->hThread = OpenThread(SYNCHRONIZE, FALSE, GetCurrentThreadId());
            DWORD written = 0;
            return WriteFile(startup->hStdOutput, output.data(), 300, &written, nullptr);
        });
    tests::failEachAllocation([&](long, auto fail) {
        const std::size_t before = tests::handleCount();
        const std::string command = "a command too long to be kept without an allocation";
        const Flag stopFlag = makeFlag();
        Result result;
        const bool hasFailed = fail([&] { result = executeCommand(command, stopFlag); });
        if (!hasFailed) {
            EXPECT_EQ(result, wrote(output));
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
    EXPECT_EQ(runCommand("echo x"), kFailed);
    EXPECT_TRUE(tests::AllocationFault::happened());
}

#ifndef _MSC_VER  // whose future waits without memory
// The first wait for a future allocates its lock. When that fails, the output has not ended.
TEST_F(CommandRunner, StopsReadingWhenTheWaitForItFails) {
    const tests::Hook process("CreateProcessA", CreateProcessA, [](auto...) { return TRUE; });
    const tests::Hook read("ReadFile", ReadFile, [](auto...) {
        SetLastError(ERROR_NO_DATA);
        return FALSE;
    });
    const DWORD caller = GetCurrentThreadId();
    bool isDue = false;  // used by the caller alone
    const tests::Hook thread("_beginthreadex", _beginthreadex, [&](auto real, auto... arguments) {
        const auto made = real(arguments...);
        isDue = true;
        return made;
    });
    const tests::Hook memory("malloc", std::malloc, [&](auto real, std::size_t size) -> void* {
        const bool fails = GetCurrentThreadId() == caller && std::exchange(isDue, false);
        return fails ? nullptr : real(size);
    });
    EXPECT_THROW(runCommand("echo x"), std::system_error);
}
#endif

// In place of CreateProcessA: the first call is held, and with it the turn to start.
struct HeldStart {
    const Handle isHeld = makeEvent();
    const Handle goOn = makeEvent();
    std::atomic<int> calls = 0;

    BOOL createProcess() {
        ++calls;
        if (calls == 1) {
            SetEvent(isHeld.get());
            await(goOn);
        }
        return TRUE;
    }
};

// One that started between the pipes and the process of another would inherit its write ends.
TEST_F(CommandRunner, WaitsUntilAnotherHasStarted) {
    HeldStart start;
    const tests::Hook process("CreateProcessA", CreateProcessA,
                              [&](auto...) { return start.createProcess(); });
    auto first = std::async(std::launch::async, executeCommand, "", makeFlag());
    await(start.isHeld);
    bool hasWaited = false;
    const tests::Hook sleep("Sleep", Sleep, [&](auto real, DWORD milliseconds) {
        hasWaited = true;
        SetEvent(start.goOn.get());
        real(milliseconds);
    });
    const tests::Hook createPipe("CreatePipe", CreatePipe, [&](auto real, auto... arguments) {
        EXPECT_TRUE(hasWaited) << "it prepared to start";
        return real(arguments...);
    });
    EXPECT_EQ(executeCommand("", makeFlag()), wrote(""));
    SetEvent(start.goOn.get());
    EXPECT_EQ(first.get(), wrote(""));
    EXPECT_EQ(start.calls, 2);
}

TEST_F(CommandRunner, StartsNothingIfItsFlagWasTrueBeforeItsTurn) {
    HeldStart start;
    const tests::Hook process("CreateProcessA", CreateProcessA,
                              [&](auto...) { return start.createProcess(); });
    auto first = std::async(std::launch::async, executeCommand, "", makeFlag());
    await(start.isHeld);
    EXPECT_EQ(executeCommand("", makeFlag(true)), kFailed);

    // While this command waits, its flag becomes true, and then the other one gives up the turn.
    const Flag stopFlag = makeFlag();
    const Handle isTurnOver = makeEvent();
    const tests::Hook read("ReadFile", ReadFile, [&](auto real, auto... arguments) {
        SetEvent(isTurnOver.get());
        return real(arguments...);
    });
    const tests::Hook sleep("Sleep", Sleep, [&](auto, DWORD /*milliseconds*/) {
        *stopFlag = true;
        SetEvent(start.goOn.get());
        await(isTurnOver);
    });
    EXPECT_EQ(executeCommand("", stopFlag), kFailed);
    EXPECT_EQ(start.calls, 1) << "a second process";
    SetEvent(start.goOn.get());
    EXPECT_EQ(first.get(), wrote(""));
}

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

}  // namespace
