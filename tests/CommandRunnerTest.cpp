// Some children are real: the interpreter, and CommandChild beside the test program. Where the
// time of a process buys nothing, a hook in CreateProcessA plays the child.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "CommandChild.h"
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
    CommandRunner() {
        std::wstring program(MAX_PATH, L'\0');
        GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
        std::filesystem::current_path(std::filesystem::path(program).parent_path());
    }
    ~CommandRunner() override { std::filesystem::current_path(directoryBefore); }
    const std::filesystem::path directoryBefore = std::filesystem::current_path();
};

Result failed() { return {false, ""}; }
Result wrote(const std::string& output) { return {true, output}; }

Flag flag(bool isSet = false) { return std::make_shared<std::atomic<bool>>(isSet); }

std::string withoutReturns(std::string text) {
    std::erase(text, '\r');
    return text;
}

Handle makeEvent(const std::string& name = {}) {
    return Handle(CreateEventA(nullptr, TRUE, FALSE, name.empty() ? nullptr : name.c_str()));
}

void await(const Handle& event) { WaitForSingleObject(event.get(), INFINITE); }

bool isOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

// Two events, for a child that sets one, waits for the other and then does the rest.
class Leash {
 public:
    std::string steps() const { return " signal here" + name + " await go" + name; }
    void awaitChild() const { await(here); }
    void release() const { SetEvent(go.get()); }

 private:
    static inline int made = 0;
    const std::string name = std::to_string(GetCurrentProcessId()) + "." + std::to_string(++made);
    Handle here = makeEvent("here" + name);
    Handle go = makeEvent("go" + name);
};

// While it lives, each command starts no process but writes `output`, at most a pipe full.
auto playChild(const std::string& output) {
    return tests::hook<"CreateProcessA", decltype(CreateProcessA)>(
        [output](auto, auto, auto, auto, auto, auto, auto, auto, auto, STARTUPINFOA* startup,
                 PROCESS_INFORMATION* process) {
            DWORD written = 0;
            WriteFile(startup->hStdOutput, output.data(), static_cast<DWORD>(output.size()),
                      &written, nullptr);
            process->hProcess = CreateEventA(nullptr, TRUE, FALSE, nullptr);
            process->hThread = CreateEventA(nullptr, TRUE, FALSE, nullptr);
            return TRUE;
        });
}

TEST(Handle, HasOneOwner) {
    EXPECT_EQ(Handle().get(), nullptr);
    EXPECT_EQ(Handle(INVALID_HANDLE_VALUE).get(), nullptr);
    const std::size_t before = tests::handleCount();
    {
        Handle first = makeEvent();
        const void* const event = first.get();
        Handle& same = first;
        first = std::move(same);
        EXPECT_EQ(first.get(), event);
        Handle second = makeEvent();
        second = std::move(first);
        EXPECT_EQ(second.get(), event);
        EXPECT_EQ(tests::handleCount(), before + 1);
    }
    EXPECT_EQ(tests::handleCount(), before);
}

// Microsoft's pages disagree about the rights of the handles that CreatePipe gives. If this fails,
// every command gives (false, "").
TEST(CommandRunnerPlatform, TheReadEndOfAPipeCanBeMadeNonBlocking) {
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    ASSERT_TRUE(CreatePipe(&readEnd, &writeEnd, nullptr, 0));
    const Handle reader(readEnd);
    Handle writer(writeEnd);
    DWORD mode = PIPE_NOWAIT;
    ASSERT_TRUE(SetNamedPipeHandleState(readEnd, &mode, nullptr, nullptr))
        << "Windows refuses PIPE_NOWAIT for the read end of CreatePipe with error "
        << GetLastError() << ", so no command can be run";
    char byte = 0;
    DWORD count = 0;
    EXPECT_FALSE(ReadFile(readEnd, &byte, 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_DATA}) << "an empty pipe";
    writer = Handle();
    EXPECT_FALSE(ReadFile(readEnd, &byte, 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BROKEN_PIPE}) << "a closed one";
}

TEST_F(CommandRunner, ReturnsWhatTheInterpreterWrites) {
    SetEnvironmentVariableA("QUEND_TEST", "value");
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
        {"CommandChild bytes 200000", wrote(withoutReturns(childBytes(200'000)))},
        {"echo " + std::string(7995, 'x'), wrote(std::string(7995, 'x') + '\n')},
        {"echo " + std::string(33'000, 'x'), failed()},
        {std::string("echo a\0b", 8), wrote("a\n")},
    };
    for (const auto& [command, result] : cases) {
        // Not EXPECT_EQ, which would print all of a long output.
        EXPECT_TRUE(runCommand(command) == result) << command.substr(0, 100);
    }
    SetEnvironmentVariableA("QUEND_TEST", nullptr);
    for (const std::size_t size : {0U, 1U, 127U, 128U, 129U, 256U, 4096U}) {
        const auto child = playChild(childBytes(size));
        EXPECT_EQ(runCommand(""), wrote(withoutReturns(childBytes(size))));
    }
}

// The interpreter holds the output while it waits for its command: only a process that is left
// behind can end it early.
TEST_F(CommandRunner, OutputEndsWithItsLastHolder) {
    const std::array<const char*, 2> holders[] = {{"CommandChild leave say a", " say b"},
                                                  {"CommandChild say a close", "&echo b"}};
    for (const auto& [before, after] : holders) {
        const Leash leash;
        auto result = std::async(std::launch::async, runCommand, before + leash.steps() + after);
        leash.awaitChild();
        leash.release();
        EXPECT_EQ(std::get<1>(result.get()).substr(0, 2), "ab");
    }
    const Leash leash;
    EXPECT_EQ(runCommand("CommandChild leave say a close" + leash.steps()), wrote("a"));
    leash.release();
}

// The second child blocks in its standard error until the run is stopped.
TEST_F(CommandRunner, AStoppedRunLeavesItsChildAlone) {
    const Leash leash;
    const auto stopFlag = flag();
    std::string output;
    const auto read = tests::hook<"ReadFile", decltype(ReadFile)>(
        [&](auto real, HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* none) {
            const BOOL isRead = real(handle, buffer, size, count, none);
            output.append(static_cast<char*>(buffer), *count);
            *stopFlag = output == "abc";
            return isRead;
        });
    EXPECT_EQ(executeCommand("CommandChild say abc&CommandChild bytes 100000 1>&2&CommandChild" +
                                 leash.steps(),
                             stopFlag),
              wrote("abc"));
    leash.awaitChild();  // it was neither killed nor waited for
    leash.release();
}

// What Windows may refuse although Wine accepts it, and what no output shows.
TEST_F(CommandRunner, AsksWindowsForExactlyThis) {
    std::string systemDirectory(MAX_PATH, '\0');
    systemDirectory.resize(GetSystemDirectoryA(systemDirectory.data(), MAX_PATH));
    const auto members = [](const STARTUPINFOA& s) {
        return std::tuple(s.cb, s.lpReserved, s.lpDesktop, s.lpTitle, s.dwX, s.dwY, s.dwXSize,
                          s.dwYSize, s.dwXCountChars, s.dwYCountChars, s.dwFillAttribute, s.dwFlags,
                          s.wShowWindow, s.cbReserved2, s.lpReserved2, s.hStdInput, s.hStdOutput,
                          s.hStdError);
    };
    std::vector<std::pair<HANDLE, HANDLE>> pipes;  // read and write end: of errors, of output
    const auto createPipe = tests::hook<"CreatePipe", decltype(CreatePipe)>(
        [&](auto real, HANDLE* readEnd, HANDLE* writeEnd, SECURITY_ATTRIBUTES* security,
            auto size) {
            EXPECT_EQ(security->nLength, sizeof(SECURITY_ATTRIBUTES));
            EXPECT_EQ(security->lpSecurityDescriptor, nullptr);
            EXPECT_TRUE(security->bInheritHandle);
            EXPECT_EQ(size, 0U);
            const BOOL isMade = real(readEnd, writeEnd, security, size);
            pipes.emplace_back(*readEnd, *writeEnd);
            return isMade;
        });
    const auto createProcess = tests::hook<"CreateProcessA", decltype(CreateProcessA)>(
        [&](auto real, const char* application, char* command, auto ofProcess, auto ofThread,
            BOOL inherits, DWORD flags, void* environment, const char* directory,
            STARTUPINFOA* startup, auto process) {
            EXPECT_EQ(application, systemDirectory + "\\cmd.exe");
            EXPECT_STREQ(command, R"(/c echo "x")");
            EXPECT_TRUE(inherits);
            EXPECT_EQ(flags, DWORD{CREATE_NO_WINDOW});
            EXPECT_TRUE(ofProcess == nullptr && ofThread == nullptr);
            EXPECT_TRUE(environment == nullptr && directory == nullptr);
            STARTUPINFOA expected{};
            expected.cb = sizeof(expected);
            expected.dwFlags = STARTF_USESTDHANDLES;
            expected.hStdError = pipes.at(0).second;
            expected.hStdOutput = pipes.at(1).second;
            EXPECT_TRUE(members(*startup) == members(expected));
            for (const auto& pipe : pipes) {
                DWORD inherited = 1;
                DWORD mode = 0;
                EXPECT_TRUE(GetHandleInformation(pipe.first, &inherited) && inherited == 0);
                EXPECT_TRUE(GetNamedPipeHandleStateA(pipe.first, &mode, nullptr, nullptr, nullptr,
                                                     nullptr, 0));
                EXPECT_EQ(mode, DWORD{PIPE_NOWAIT});
            }
            return real(application, command, ofProcess, ofThread, inherits, flags, environment,
                        directory, startup, process);
        });
    const auto read = tests::hook<"ReadFile", decltype(ReadFile)>(
        [&](auto real, HANDLE handle, auto buffer, DWORD size, auto count, auto overlapped) {
            EXPECT_EQ(handle, pipes.at(1).first);
            EXPECT_EQ(size, 128U);
            EXPECT_EQ(overlapped, nullptr);
            EXPECT_FALSE(isOpen(pipes.at(0).second) || isOpen(pipes.at(1).second));
            return real(handle, buffer, size, count, overlapped);
        });
    const auto sleep = tests::hook<"Sleep", decltype(Sleep)>(
        [](auto, auto) { ADD_FAILURE() << "nothing to wait for: the output is polled"; });
    EXPECT_EQ(executeCommand(R"(echo "x")", flag()), wrote("\"x\"\n"));
    pipes.clear();
    EXPECT_EQ(executeCommand(R"(echo "x")", flag(true)), wrote("")) << "started, but not read";
    EXPECT_EQ(pipes.size(), 2U);
}

// Only the broken pipe, with nothing read, is the end.
TEST_F(CommandRunner, ReadsOnUntilThePipeIsBroken) {
    struct Answer {
        BOOL isRead;
        std::string text;
        DWORD error;
    };
    const std::vector<Answer> answers = {
        {TRUE, "a", 0},
        {TRUE, "", 0},  // a child that writes nothing is no end
        {TRUE, "", ERROR_BROKEN_PIPE},
        {FALSE, "", ERROR_NO_DATA},
        {FALSE, "", ERROR_ACCESS_DENIED},
        {FALSE, "", 0},
        {FALSE, "\rb", ERROR_BROKEN_PIPE},
        {FALSE, "c\r", ERROR_MORE_DATA},
        {FALSE, "", ERROR_BROKEN_PIPE},
    };
    std::size_t reads = 0;
    const auto read = tests::hook<"ReadFile", decltype(ReadFile)>(
        [&](auto, HANDLE, void* buffer, DWORD, DWORD* count, OVERLAPPED*) {
            const auto& [isRead, text, error] = answers.at(reads++);
            text.copy(static_cast<char*>(buffer), text.size());
            *count = static_cast<DWORD>(text.size());
            SetLastError(error);
            return isRead;
        });
    const auto child = playChild("");
    EXPECT_EQ(executeCommand("", flag()), wrote("abc"));
    EXPECT_EQ(reads, answers.size());
}

// The preparation is eight calls.
TEST_F(CommandRunner, FailingPlatformCallsLeaveNothingBehind) {
    int calls = 0;
    int failing = 0;
    const auto fail = [&](auto real, auto... arguments) {
        return ++calls == failing ? decltype(real(arguments...)){} : real(arguments...);
    };
    const auto pipe = tests::hook<"CreatePipe", decltype(CreatePipe)>(fail);
    const auto keep = tests::hook<"SetHandleInformation", decltype(SetHandleInformation)>(fail);
    const auto state =
        tests::hook<"SetNamedPipeHandleState", decltype(SetNamedPipeHandleState)>(fail);
    const auto directory = tests::hook<"GetSystemDirectoryA", decltype(GetSystemDirectoryA)>(fail);
    const auto process = tests::hook<"CreateProcessA", decltype(CreateProcessA)>(fail);
    EXPECT_EQ(executeCommand("echo x", flag()), wrote("x\n"));
    EXPECT_EQ(std::exchange(calls, 0), 8);
    const std::size_t handlesBefore = tests::handleCount();
    const long blocksBefore = tests::liveBlocks();
    for (failing = 1; failing <= 9; ++failing) {
        EXPECT_EQ(executeCommand("echo x", flag()), failing <= 8 ? failed() : wrote("x\n"));
        EXPECT_EQ(std::exchange(calls, 0), std::min(failing, 8)) << "went on after a failure";
        EXPECT_EQ(tests::handleCount(), handlesBefore) << failing;
        EXPECT_EQ(tests::liveBlocks(), blocksBefore) << failing;
    }
}

TEST_F(CommandRunner, FailedAllocationLeavesNoHandleOpen) {
    const auto child = playChild(childBytes(300));
    const auto expected = wrote(withoutReturns(childBytes(300)));
    const std::string command(100, 'x');
    tests::failEachAllocation([&](long, auto fail) {
        const std::size_t before = tests::handleCount();
        const auto stopFlag = flag();
        fail([&] { EXPECT_TRUE(executeCommand(command, stopFlag) == expected); });
        EXPECT_EQ(tests::handleCount(), before);
        return 0L;
    });
}

TEST_F(CommandRunner, AnExceptionInTheBackgroundIsAFailure) {
    std::optional<tests::AllocationFault> fault;
    const auto pipe = tests::hook<"CreatePipe", decltype(CreatePipe)>(
        [&](auto real, auto... arguments) {  // on the background thread
            fault.emplace(1, true);
            return real(arguments...);
        });
    EXPECT_EQ(runCommand("echo x"), failed());
    EXPECT_TRUE(tests::AllocationFault::happened());
}

TEST_F(CommandRunner, ThreadsGetTheirOwnOutput) {
    std::array<std::future<Result>, 8> results;
    for (std::size_t i = 0; i < results.size(); ++i) {
        results[i] = std::async(std::launch::async, runCommand,
                                "CommandChild bytes 9999 say " + std::to_string(i));
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i].get(), wrote(withoutReturns(childBytes(9999)) + std::to_string(i)));
    }
}

// A command that started between the pipes and the process of another would hold its write ends.
TEST_F(CommandRunner, OneThatWaitsForAnotherToStartEndsAtItsFlag) {
    const Handle isStarting = makeEvent();
    const Handle go = makeEvent();
    std::vector<HANDLE> writeEnds;
    const auto createProcess =
        tests::hook<"CreateProcessA", decltype(CreateProcessA)>([&](auto, auto... arguments) {
            if (writeEnds.empty()) {  // the first one
                const STARTUPINFOA& startup = *std::get<8>(std::tuple(arguments...));
                writeEnds = {startup.hStdOutput, startup.hStdError};
                SetEvent(isStarting.get());
                await(go);
            }
            return TRUE;
        });
    int pipes = 0;
    const auto createPipe =
        tests::hook<"CreatePipe", decltype(CreatePipe)>([&](auto real, auto... arguments) {
            if (++pipes == 3) {
                EXPECT_FALSE(isOpen(writeEnds.at(0)) || isOpen(writeEnds.at(1)));
            }
            return real(arguments...);
        });
    std::function<void()> whileWaiting = [] {};
    const auto sleep = tests::hook<"Sleep", decltype(Sleep)>([&](auto, auto) { whileWaiting(); });

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

TEST_F(CommandRunner, GivesUpAfterSixtySeconds) {
    const Leash leash;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(runCommand("CommandChild say lost" + leash.steps()), failed());
    const auto taken = std::chrono::steady_clock::now() - start;
    leash.awaitChild();
    leash.release();
    EXPECT_GE(taken, 60s);
    EXPECT_LT(taken, 75s);  // all but the minute is the start of one process
}

}  // namespace
