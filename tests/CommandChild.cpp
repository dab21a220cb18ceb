// The child of the command runner's tests. Does what its arguments say, one after the other:
//   say TEXT      writes it to standard output
//   bytes N       writes N bytes there
//   await NAME    sets the event arrivedNAME and waits for goOnNAME; after five minutes the test is
//                 dead, and it goes on
#include <windows.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string step = argv[i];
        const std::string value = argv[i + 1];
        if (step == "say") {
            std::fputs(value.c_str(), stdout);
        } else if (step == "bytes") {
            std::fputs(std::string(std::stoul(value), 'x').c_str(), stdout);
        } else if (step == "await") {
            HANDLE arrived = OpenEventA(EVENT_MODIFY_STATE, FALSE, ("arrived" + value).c_str());
            HANDLE goOn = OpenEventA(SYNCHRONIZE, FALSE, ("goOn" + value).c_str());
            SetEvent(arrived);
            WaitForSingleObject(goOn, 300'000);
        }
    }
}
