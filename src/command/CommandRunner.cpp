// Two pipes lead out of the child: one for its standard output, one for its standard error. This
// process keeps the read ends, which no child inherits; the child has the only write ends as soon
// as it runs, so the pipe breaks when the last process that holds one of them ends.
#include "command/CommandRunner.h"

#include <windows.h>

#include <array>
#include <chrono>
#include <future>
#include <mutex>
#include <optional>
#include <utility>

#include "command/Handle.h"

namespace Quend::Framework::Command {
namespace {

using Result = std::tuple<bool, std::string>;

constexpr std::chrono::seconds kTimeLimit{60};
constexpr std::size_t kReadSize = 128;
constexpr std::size_t kDirectorySize = 4096;

struct Pipe {
    Handle readEnd;
    Handle writeEnd;
};

// Closed from the last to the first: the process before the pipes.
struct Child {
    Pipe errors;  // never read; without it the child would have no standard error at all
    Pipe output;
    Handle thread;
    Handle process;
};

bool createPipe(Pipe& pipe) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (CreatePipe(&readEnd, &writeEnd, &inheritable, 0) == FALSE) {
        return false;
    }
    pipe.readEnd = Handle(readEnd);
    pipe.writeEnd = Handle(writeEnd);
    return SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0) != FALSE;
}

bool makeNonBlocking(const Handle& readEnd) {
    DWORD mode = PIPE_NOWAIT;
    return SetNamedPipeHandleState(readEnd.get(), &mode, nullptr, nullptr) != FALSE;
}

// Held from the first pipe to the closing of the write ends. A process inherits every handle that
// can be inherited at that moment, so of two that start at once each would hold the other's write
// ends, and a quick command would last as long as the slow one beside it.
//
// Made on first use, which the language makes safe between threads: so it has no place in the
// order of the globals, and is there even for a command that another file's constructor runs.
std::mutex& startMutex() {
    static std::mutex mutex;
    return mutex;
}

// Empty if any step fails. On every way out, the write ends are closed before the lock is free.
std::optional<Child> start(const std::string& command) {
    const std::lock_guard lock(startMutex());
    Child child;
    if (!createPipe(child.errors) || !createPipe(child.output) ||
        !makeNonBlocking(child.errors.readEnd) || !makeNonBlocking(child.output.readEnd)) {
        return std::nullopt;
    }

    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = child.output.writeEnd.get();
    startup.hStdError = child.errors.writeEnd.get();

    std::array<char, kDirectorySize> directory{};
    if (GetSystemDirectoryA(directory.data(), static_cast<UINT>(directory.size())) == 0) {
        return std::nullopt;  // rather than whatever cmd.exe lies in the root of the drive
    }
    const std::string application = std::string(directory.data()) + "\\cmd.exe";
    std::string commandLine = "/c " + command;

    PROCESS_INFORMATION process{};
    const bool isStarted =
        CreateProcessA(application.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                       CREATE_NO_WINDOW, nullptr, nullptr, &startup, &process) != FALSE;
    child.output.writeEnd = Handle();
    child.errors.writeEnd = Handle();
    if (!isStarted) {
        return std::nullopt;
    }
    child.thread = Handle(process.hThread);
    child.process = Handle(process.hProcess);
    return child;
}

// Polls without sleeping: an empty pipe answers at once, with ERROR_NO_DATA.
std::string readUntilBroken(const Handle& readEnd, const std::atomic<bool>& stopFlag) {
    std::string output;
    std::array<char, kReadSize> buffer{};
    while (!stopFlag) {
        DWORD count = 0;
        const bool isRead = ReadFile(readEnd.get(), buffer.data(),
                                     static_cast<DWORD>(buffer.size()), &count, nullptr) != FALSE;
        if (!isRead && count == 0 && GetLastError() == ERROR_BROKEN_PIPE) {
            break;
        }
        output.append(buffer.data(), count);
    }
    return output;
}

}  // namespace

Result runCommand(std::string command) {
    const auto stopFlag = std::make_shared<std::atomic<bool>>(false);
    std::future<Result> result =
        std::async(std::launch::async, [command = std::move(command), stopFlag]() -> Result {
            try {
                return executeCommand(command, stopFlag);
            } catch (...) {
                return {false, {}};
            }
        });
    const auto deadline = std::chrono::steady_clock::now() + kTimeLimit;
    if (result.wait_until(deadline) == std::future_status::ready) {
        return result.get();
    }
    stopFlag->exchange(true);
    return {false, {}};  // the future's destructor waits for the task's next look at the flag
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): a task owns what it works with
Result executeCommand(std::string command, std::shared_ptr<std::atomic<bool>> stopFlag) {
    const std::optional<Child> child = start(command);
    if (!child) {
        return {false, {}};
    }
    std::string output = readUntilBroken(child->output.readEnd, *stopFlag);
    std::erase(output, '\r');
    return {true, std::move(output)};
}

}  // namespace Quend::Framework::Command
