/// \file
// Runs a command line through the system's command interpreter, without a console window, and
/// returns what it wrote to its standard output.
///
/// Threading: any number of threads may run commands at once, each gets its own output. Only
/// the moment of starting is taken in turns, by milliseconds.
///
/// Lifetime: nothing outlives a call but, after the time limit, the child process itself.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <tuple>

namespace Quend::Framework::Command {

/// Runs `command` and waits for the end of its output, 60 seconds at most. Blocks the calling
/// thread for that long, and returns
///   (true, output)    when the interpreter was started and the output ended in time: each byte
///                     as the child wrote it, in whatever encoding that was, but for the
///                     carriage returns (13), which are removed wherever they stand;
///   (false, "")       when it was not started, when an exception ended the background task, or
///                     at the limit. The output so far is lost then, and the child goes on: it
///                     is neither killed nor waited for.
///
/// The command. cmd.exe of the system directory gets "/c " and the text as it stands, in the ANSI
/// code page: quotes, & | < > ^ and % mean what they mean to the interpreter, so text of somebody
/// else's does not belong in it. By cmd.exe's own rule a text that begins with a quote may lose it
/// and the last one: another pair around the whole is what to lose. A null character ends it. The
/// child has this process's working directory and environment, and no standard input. The
/// interpreter takes some 8,000 characters; what Windows refuses as too long for any process is a
/// failed start.
///
/// Success. Started is not succeeded: the exit code is not collected, and a command that does not
/// exist is (true, "") too, since the interpreter starts and complains to its standard error.
///
/// Standard error is dropped, as nobody reads its pipe. So a child that writes more to it than
/// the pipe's buffer holds (by default 4,096 bytes) stands still in that write, and the call
/// lasts until the limit, where the pipe closes and the write fails: (false, ""). Commands that
/// may complain at length say 2>nul or 2>&1.
///
/// The end of the output is the moment when the last process that holds the pipe closes it, not
/// the end of the command: one that leaves a process of its own behind, with the output open,
/// lasts until that ends or the limit. A command that closes its output early and lives on
/// lasts all the same, as its interpreter has the output open and waits for it.
///
/// The cost. The output is polled without a pause, for a read that blocks could not be stopped
/// at the limit; one background thread is fully busy until the call returns.
///
/// Errors: std::system_error when no thread can be had for the task, std::bad_alloc; then nothing
/// was started. No failure of Windows' own calls is an exception.
std::tuple<bool, std::string> runCommand(std::string command);

/// What runCommand does in its background task, on the calling thread and without a time limit.
/// Another thread ends it by storing true in `stopFlag`, which must not be null: the flag is
/// looked at before each read, no read blocks, and so the call returns at once with (true, the
/// output so far). A flag that is true from the start is no reason not to start the command.
///
/// Errors: std::bad_alloc, or std::system_error when the lock of the start cannot be taken. No
/// handle stays open; a child that was started goes on.
std::tuple<bool, std::string> executeCommand(std::string command,
                                             std::shared_ptr<std::atomic<bool>> stopFlag);

}  // namespace Quend::Framework::Command
