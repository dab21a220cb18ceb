// A DLL with nothing in it but an entry point like the library's: what loading costs anyway.
#include <windows.h>

extern "C" __declspec(dllexport) BOOL WINAPI
    DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(module);
    }
    return TRUE;
}
