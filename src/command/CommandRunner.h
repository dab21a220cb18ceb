/// \file
/// Runs a command with the system's command interpreter, without a console window, and returns
/// what it wrote to its standard output.
///
/// The child inherits every inheritable handle of this process and holds it open while it runs.
/// Likewise, a process that the host starts in another thread at the same moment, with inheriting
/// of handles, inherits our pipe ends: the command then lasts until that process ends.
///
/// Threading: any thread, any number at once, but never from DllMain: runCommand would not return,
/// since it waits for a thread that cannot begin before DllMain ends. Commands start one at a time.
/// One that has to wait for another tries again after each tick of the system's timer, which is
/// 15.6 ms long by default.
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
/// cmd.exe first runs the AutoRun commands of the Windows registry, as for every command prompt of
/// this user. Their output is part of the result and comes first.
///
/// The output is returned in the child's own encoding, without carriage returns. It ends when the
/// last process that holds the pipe closes it: a background process that inherited the output keeps
/// the call waiting. The exit code is not reported; a command that does not exist gives (true, "").
/// Standard error is dropped, and nobody reads its pipe: a child that writes more to it than the
/// pipe holds (4,096 bytes by default) blocks until the limit. Add 2>nul or 2>&1 to such commands.
///
/// A background thread polls the output and keeps one core busy. The call returns after 60 seconds
/// at the latest, unless Windows is then still about to start that thread or the command: it waits
/// for that. At the limit the output so far is lost, and the child goes on: it is neither killed
/// nor waited for. A command that still waits for another to start never starts. One whose thread
/// begins only after the limit is started all the same, unless it has to wait.
///
/// Throws: std::system_error if the background thread cannot be created, std::bad_alloc; nothing
/// was started then. std::system_error also if memory for the wait runs out; that ends the call as
/// the limit does.
/// On failure: (false, "") if the command could not be started, if memory ran out in the
/// background, and at the limit.
std::tuple<bool, std::string> runCommand(std::string command);

/// Does the work of runCommand on the calling thread, without a time limit.
///
/// Once another thread stores true in `stopFlag`, the call stops reading and returns (true, the
/// output so far). A call that has to wait for another command to start reads the flag as well: if
/// it became true before the turn came, the call returns (false, "") and starts nothing. A call
/// that need not wait does not read the flag before it reads the output: it starts its command even
/// if the flag is already true, and returns (true, "").
///
/// Throws: std::bad_alloc; every handle is closed then, and a child that was started goes on.
/// On failure: (false, "") if the command could not be started.
/// Requires: `stopFlag` is not null.
std::tuple<bool, std::string> executeCommand(std::string command,
                                             std::shared_ptr<std::atomic<bool>> stopFlag);

}  // namespace Quend::Framework::Command
