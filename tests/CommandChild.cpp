// The child of the command runner's tests. Does what its arguments say, one after the other:
//   say TEXT      writes it to standard output
//   bytes N       writes childBytes(N) there
//   close         closes standard output
//   await NAME    waits for an event of that name; ends after five minutes, when the test is dead
//   signal NAME   sets one
//   leave ...     starts another of this program to do the rest, and ends; without the console,
//                 as under Wine a console's host inherits the output and holds it open
#include "CommandChild.h"

#include <windows.h>

#include <string>

namespace {

void write(const std::string& text) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text.data(), static_cast<DWORD>(text.size()),
              &written, nullptr);
}

void leave(std::string commandLine) {
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    PROCESS_INFORMATION process{};
    CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, DETACHED_PROCESS, nullptr,
                   nullptr, &startup, &process);
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string step = argv[i];
        if (step == "close") {
            CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
        } else if (step == "leave") {
            std::string commandLine = argv[0];
            while (++i < argc) {
                commandLine.append(" ").append(argv[i]);
            }
            leave(commandLine);
        } else if (++i == argc) {
            return 1;
        } else if (step == "say") {
            write(argv[i]);
        } else if (step == "bytes") {
            write(childBytes(std::stoul(argv[i])));
        } else if (step == "await") {
            constexpr DWORD kFiveMinutes = 300'000;
            if (WaitForSingleObject(OpenEventA(SYNCHRONIZE, FALSE, argv[i]), kFiveMinutes) != 0) {
                return 1;
            }
        } else if (step == "signal") {
            SetEvent(OpenEventA(EVENT_MODIFY_STATE, FALSE, argv[i]));
        }
    }
    return 0;
}
