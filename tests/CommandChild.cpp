// The child of the command runner's tests. Does what its arguments say, one after the other:
//   say TEXT      writes it to standard output
//   bytes N       writes N bytes there: 0 to 250, so that a lost block of 128 or 256 would show
//   close         closes standard output
//   await NAME    sets the event hereNAME and waits for goNAME; ends after five minutes, when the
//                 test is dead
//   leave ...     starts another of this program to do the rest, and ends; without the console,
//                 as under Wine a console's host inherits the output and holds it open
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace {

constexpr DWORD kFiveMinutes = 300'000;

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
        const std::string value = i + 1 < argc ? argv[i + 1] : "";
        if (step == "leave") {
            leave("CommandChild" + std::string(std::strstr(GetCommandLineA(), "leave") + 5));
            return 0;
        }
        if (step == "close") {
            CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
            continue;
        }
        ++i;
        if (step == "say") {
            write(value);
        } else if (step == "bytes") {
            std::string bytes(std::stoul(value), '\0');
            std::generate(bytes.begin(), bytes.end(),
                          [i = 0]() mutable { return static_cast<char>(i++ % 251); });
            write(bytes);
        } else if (step == "await") {
            SetEvent(OpenEventA(EVENT_MODIFY_STATE, FALSE, ("here" + value).c_str()));
            auto* const go = OpenEventA(SYNCHRONIZE, FALSE, ("go" + value).c_str());
            if (WaitForSingleObject(go, kFiveMinutes) != 0) {
                return 1;
            }
        }
    }
    return 0;
}
