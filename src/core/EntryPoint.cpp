#include <windows.h>

// The library keeps nothing per thread, so it asks Windows not to report threads. The result is not
// an error: Windows refuses a module that has a thread storage directory, and every DLL built by
// MinGW has one, since its start-up code (dllcrt2.o) pulls it in. The reports are ignored then.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(module);
    }
    return TRUE;
}
