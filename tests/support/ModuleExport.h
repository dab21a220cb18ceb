#pragma once

#include <windows.h>

namespace tests {

// By way of void*, as GetProcAddress returns a function of another type.
template <typename Function>
Function* exportOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace tests
