// Load and unload, in a program that does not use the library but holds GCC's runtime, as every
// client of it does. Bare: a DLL with an entry point alone.
#include <windows.h>

#include <system_error>

#include "Bench.h"

namespace bench {
namespace {

auto load(const wchar_t* name) {
    return [name] {
        HMODULE const module = LoadLibraryW(name);
        if (module == nullptr) {
            throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
        }
        FreeLibrary(module);
    };
}

const Group loading(Mode::table, {1}, [](std::size_t /*size*/) {
    addCase("load/ours", load(L"Quend_Framework_1.1.12.dll"));
    addCase("load/bare", load(L"EmptyLibrary.dll"));
});

}  // namespace
}  // namespace bench
