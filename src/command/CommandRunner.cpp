// Two pipes lead out of the child, for its standard output and its standard error. This process
// keeps the read ends, which no child inherits. Once the child runs it has the only write ends, so
// a pipe breaks when the last process that holds its write end closes it or ends.
#include "command/CommandRunner.h"

#include <windows.h>

#include <array>
#include <atomic>
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

// One command starts at a time, from its first pipe to the closing of the write ends: a process
// inherits every inheritable handle that is open when it starts, so each of two that started at
// once would hold the other's write ends, and a quick command would last as long as a slow one.
//
// Not a std::mutex: its try_lock may fail although the mutex is free, as when memory runs out.
class StartLock {
 public:
    bool try_lock() { return !isTaken.exchange(true); }
    void unlock() { isTaken = false; }

 private:
    std::atomic<bool> isTaken{false};
};
constinit StartLock startLock;

// Empty if any step fails. On every way out, the write ends are closed before the turn is over.
std::optional<Child> start(const std::string& command, const std::atomic<bool>& stopFlag) {
    std::unique_lock turn(startLock, std::try_to_lock);
    while (!turn) {
        Sleep(1);
        turn = std::unique_lock(startLock, std::try_to_lock);
        if (stopFlag) {  // read after trying: a flag that was true before the turn is seen
            return std::nullopt;
        }
    }
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
    const UINT length = GetSystemDirectoryA(directory.data(), static_cast<UINT>(directory.size()));
    if (length == 0 || length >= directory.size()) {
        // Failed, or does not fit: the empty buffer would make it cmd.exe of the drive's root.
        return std::nullopt;
    }
    const std::string application = std::string(directory.data(), length) + "\\cmd.exe";
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

// Reads until no process holds the write end any more, or until the flag is true. It polls, and an
// empty pipe fails at once with ERROR_NO_DATA: a read that blocked would not see the flag. It does
// not sleep in between, so that the output of a quick command is not kept waiting for a timer tick.
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
    // The future's destructor waits for the task. The flag ends the task before that, on every way
    // out: waiting may throw, too.
    const struct Stop {
        std::atomic<bool>& flag;
        ~Stop() { flag.exchange(true); }
    } stop{*stopFlag};
    const auto deadline = std::chrono::steady_clock::now() + kTimeLimit;
    if (result.wait_until(deadline) == std::future_status::ready) {
        return result.get();
    }
    return {false, {}};
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the task owns its arguments
Result executeCommand(std::string command, std::shared_ptr<std::atomic<bool>> stopFlag) {
    const std::optional<Child> child = start(command, *stopFlag);
    if (!child) {
        return {false, {}};
    }
    std::string output = readUntilBroken(child->output.readEnd, *stopFlag);
    std::erase(output, '\r');
    return {true, std::move(output)};
}

}  // namespace Quend::Framework::Command
