// A command that writes 64 KB. Bare: the platform's steps, one after the other in this thread.
#include "command/CommandRunner.h"

#include <windows.h>

#include <fstream>
#include <stdexcept>
#include <tuple>

#include "Bench.h"

namespace bench {
namespace {

constexpr const char* kCommand = "type benchmark.txt";
constexpr std::size_t kLines = 1024;

void require(bool condition) {
    if (!condition) {
        throw std::runtime_error("a step of the command failed");
    }
}

std::string runBare(std::string command) {
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nullptr, TRUE};
    HANDLE pipes[2][2] = {};  // standard error and output; the end to read, the end to write
    for (auto& pipe : pipes) {
        DWORD mode = PIPE_NOWAIT;
        require(CreatePipe(&pipe[0], &pipe[1], &attributes, 0) != 0 &&
                SetHandleInformation(pipe[0], HANDLE_FLAG_INHERIT, 0) != 0 &&
                SetNamedPipeHandleState(pipe[0], &mode, nullptr, nullptr) != 0);
    }
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = pipes[1][1];
    startup.hStdError = pipes[0][1];
    char folder[MAX_PATH] = {};
    GetSystemDirectoryA(folder, sizeof(folder));
    command.insert(0, "/c ");
    PROCESS_INFORMATION process = {};
    require(CreateProcessA((folder + std::string("\\cmd.exe")).c_str(), command.data(), nullptr,
                           nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr, &startup,
                           &process) != 0);
    CloseHandle(pipes[0][1]);
    CloseHandle(pipes[1][1]);
    std::string output;
    for (;;) {
        char buffer[128];
        DWORD count = 0;
        if (ReadFile(pipes[1][0], buffer, sizeof(buffer), &count, nullptr) == 0 && count == 0 &&
            GetLastError() == ERROR_BROKEN_PIPE) {
            break;
        }
        output.append(buffer, count);
    }
    std::erase(output, '\r');
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    CloseHandle(pipes[0][0]);
    CloseHandle(pipes[1][0]);
    return output;
}

const Group command(Mode::table, {kLines}, [](std::size_t lines) {
    std::ofstream file("benchmark.txt", std::ios::binary);
    for (std::size_t i = 0; i < lines; ++i) {
        file << std::string(62, 'x') << "\r\n";
    }
    addCase("runCommand/ours", [] {
        const auto [started, output] = Quend::Framework::Command::runCommand(kCommand);
        require(started && output.size() == 63 * kLines);
    });
    addCase("runCommand/bare", [] { require(runBare(kCommand).size() == 63 * kLines); });
});

}  // namespace
}  // namespace bench
