// The names of Windows and of its C runtime that the portable sources and their tests use and
// Linux lacks; included ahead of every source of the native build. Each follows the Windows
// convention as far as the library relies on it: a count includes the terminator, and a failure
// stores 0 and leaves an empty string.
#pragma once

#include <dlfcn.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <filesystem>
#include <string>

#define __int64 long  // `unsigned __int64` is size_t on both

namespace native {

// Converts with wcstombs or mbstowcs. What is behind the terminator is garbage on purpose: the
// debug runtime of Windows fills the buffer too.
template <typename To, typename From>
int convert(std::size_t (*function)(To*, const From*, std::size_t), std::size_t* converted,
            To* buffer, std::size_t size, const From* text, std::size_t count) {
    std::memset(buffer, 0xFE, size * sizeof(To));
    *buffer = To();
    *converted = 0;
    const std::size_t length = function(nullptr, text, 0);
    if (length == SIZE_MAX || std::min(length, count) >= size) {
        return EILSEQ;
    }
    *converted = function(buffer, text, std::min(length, count)) + 1;
    buffer[*converted - 1] = To();
    return 0;
}

}  // namespace native

inline constexpr auto wcstombs_s = [](auto... all) { return native::convert(wcstombs, all...); };
inline constexpr auto mbstowcs_s = [](auto... all) { return native::convert(mbstowcs, all...); };

// With a size of 0 it only stores the size needed: 0 for a variable that does not exist.
inline int _wgetenv_s(std::size_t* needed, wchar_t* buffer, std::size_t size, const wchar_t* name) {
    const char* const value = std::getenv(std::filesystem::path(name).c_str());
    *needed = value == nullptr ? 0 : std::strlen(value) + 1;
    return *needed == 0 || size == 0 ? 0 : mbstowcs_s(needed, buffer, size, value, size);
}

struct __timeb64 {
    std::int64_t time;
    unsigned short millitm;
};

inline int _ftime64_s(__timeb64* now) {
    std::timespec time{};
    std::timespec_get(&time, TIME_UTC);
    *now = {time.tv_sec, static_cast<unsigned short>(time.tv_nsec / 1'000'000)};
    return 0;
}

using DWORD = unsigned long;
using HMODULE = void*;

inline DWORD GetCurrentThreadId() { return pthread_self(); }
inline DWORD GetLastError() { return 126; }  // the module could not be found

// The empty path is the program itself.
inline HMODULE LoadLibraryW(const wchar_t* path) {
    return dlopen(std::filesystem::path(path).c_str(), RTLD_NOW);
}
inline void* GetProcAddress(HMODULE module, const char* name) { return dlsym(module, name); }
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 1;
inline int GetModuleHandleExW(DWORD /*flags*/, const wchar_t* /*name*/, HMODULE* /*module*/) {
    return 0;  // no such module
}
inline int FreeLibrary(HMODULE module) { return dlclose(module) == 0 ? 1 : 0; }
