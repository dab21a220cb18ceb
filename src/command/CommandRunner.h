/// \file
/// Runs a command with the system's command interpreter, without a console window, and returns
/// what it wrote to its standard output.
///
/// Threading: any thread, any number at once. Commands start one at a time, each within
/// milliseconds. Another thread of the host that starts a process at that moment, with inheriting
/// of handles, passes our pipe ends on to it: the command then lasts until that process ends.
///
/// Ownership: no thread and no handle is left after a call. After the time limit the child process
/// goes on. Built with MSVC, the pool thread of runCommand's task may keep the DLL loaded for a
/// moment longer.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <tuple>

namespace Quend::Framework::Command {

/// Runs `command` and returns (true, its standard output) when the output has ended.
///
/// cmd.exe from the system directory gets "/c " and `command` unquoted, in the ANSI code page, with
/// this process's working directory and environment and without a standard input. The characters
/// " & | < > ^ % keep their meaning: never pass untrusted text. cmd.exe strips the outer quotes of
/// a command that begins with one: wrap such a command in an extra pair. A NUL ends the command.
/// Commands longer than about 8,000 characters do not work.
///
/// The output is returned in the child's own encoding, without carriage returns. It ends when the
/// last process that holds the pipe closes it: a background process that inherited the output keeps
/// the call waiting. The exit code is not reported; a command that does not exist gives (true, "").
/// Standard error is dropped, and nobody reads its pipe: a child that writes more to it than the
/// pipe holds (4,096 bytes by default) blocks until the limit. Add 2>nul or 2>&1 to such commands.
///
/// Blocks for 60 seconds at most. A background thread polls the output and keeps one core busy.
///
/// Throws: std::system_error if the background thread cannot be created, std::bad_alloc; nothing
/// was started then.
/// On failure: (false, "") if the command could not be started, if memory ran out in the
/// background, and at the limit. At the limit the output so far is lost, and the child goes on:
/// it is neither killed nor waited for. A command still waiting to be started never starts.
std::tuple<bool, std::string> runCommand(std::string command);

/// Does the work of runCommand on the calling thread, without a time limit.
///
/// Once another thread stores true in `stopFlag`, the call stops reading and returns (true, the
/// output so far); while it waits for another command to start, it returns (false, "") and starts
/// nothing. A call that need not wait starts its command even if the flag is already true.
///
/// Throws: std::bad_alloc; every handle is closed then, and a child that was started goes on.
/// On failure: (false, "") if the command could not be started.
/// Requires: `stopFlag` is not null.
std::tuple<bool, std::string> executeCommand(std::string command,
                                             std::shared_ptr<std::atomic<bool>> stopFlag);

}  // namespace Quend::Framework::Command
