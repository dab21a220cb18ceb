// The child of the command runner's tests. Does what its arguments say, one after the other:
//   say TEXT      writes it to standard output
//   bytes N       writes N bytes there: 0 to 250, so that a lost block of 128 or 256 would show
//   await NAME    sets the event hereNAME and waits for goNAME; ends after five minutes, when the
//                 test is dead
//   leave ...     starts another of this program to do the rest, and ends; without the console,
//                 as under Wine a console's host inherits the output and holds it open
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

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
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string step = argv[i];
        const std::string value = argv[i + 1];
        if (step == "say") {
            std::fputs(value.c_str(), stdout);
        } else if (step == "bytes") {
            for (int byte = 0; byte < std::stoi(value); ++byte) {
                std::putchar(byte % 251);
            }
        } else if (step == "await") {
            std::fflush(stdout);
            SetEvent(OpenEventA(EVENT_MODIFY_STATE, FALSE, ("here" + value).c_str()));
            WaitForSingleObject(OpenEventA(SYNCHRONIZE, FALSE, ("go" + value).c_str()), 300'000);
        } else if (step == "leave") {
            leave("CommandChild" + std::string(std::strstr(GetCommandLineA(), "leave") + 5));
            break;
        }
    }
}
