#include <windows.h>

// The library keeps nothing per thread, so it asks not to be told of threads. The answer of
// DisableThreadLibraryCalls is not an error: it refuses a module that holds a TLS directory,
// and then the notifications arrive and are ignored.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(module);
    }
    return TRUE;
}
