// The child of the command runner's tests. Does what its arguments say, one after the other:
//   say TEXT      writes it to standard output
//   bytes N       writes N bytes there: 0 to 250, so that a lost block of 128 or 256 would show
//   await NAME    sets the event arrivedNAME and waits for goOnNAME; after five minutes the test is
//                 dead, and it goes on
//   leave ...     starts another of this program to do the rest, and ends; without the console,
//                 as under Wine a console's host inherits the output and holds it open
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

// Starts this program again for the steps behind "leave" on its command line.
void leave() {
    const std::string step = "leave";
    const std::string ours = GetCommandLineA();
    std::string commandLine = "CommandChild" + ours.substr(ours.find(step) + step.size());
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
            HANDLE arrived = OpenEventA(EVENT_MODIFY_STATE, FALSE, ("arrived" + value).c_str());
            HANDLE goOn = OpenEventA(SYNCHRONIZE, FALSE, ("goOn" + value).c_str());
            SetEvent(arrived);
            WaitForSingleObject(goOn, 300'000);
        } else if (step == "leave") {
            leave();
            break;
        }
    }
}
