#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tests {
namespace {

template <typename T>
T* at(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(module) + offset);
}

void** findImport(HMODULE module, const char* name) {
    const auto* dos = at<IMAGE_DOS_HEADER>(module, 0);
    const auto* nt = at<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
    const auto& table = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* library = at<IMAGE_IMPORT_DESCRIPTOR>(module, table.VirtualAddress);
         library->Name != 0; ++library) {
        auto* lookup = at<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
        auto* bound = at<IMAGE_THUNK_DATA>(module, library->FirstThunk);
        for (; lookup->u1.AddressOfData != 0; ++lookup, ++bound) {
            if (IMAGE_SNAP_BY_ORDINAL(lookup->u1.Ordinal)) {
                continue;
            }
            const auto* entry =
                at<IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(lookup->u1.AddressOfData));
            if (std::strcmp(reinterpret_cast<const char*>(entry->Name), name) == 0) {
                return reinterpret_cast<void**>(&bound->u1.Function);
            }
        }
    }
    return nullptr;
}

}  // namespace

ImportPatch::ImportPatch(const char* name, void* replacement, HMODULE module)
    : slot(findImport(module != nullptr ? module : GetModuleHandleW(nullptr), name)) {
    if (slot == nullptr) {
        ADD_FAILURE() << name << " is not imported, so nothing was replaced";
        return;
    }
    replaced = *slot;
    exchange(replacement);
}

ImportPatch::~ImportPatch() {
    if (slot != nullptr) {
        exchange(replaced);
    }
}

void ImportPatch::exchange(void* function) {
    DWORD protection = 0;
    VirtualProtect(static_cast<void*>(slot), sizeof(*slot), PAGE_READWRITE, &protection);
    *slot = function;
    VirtualProtect(static_cast<void*>(slot), sizeof(*slot), protection, &protection);
}

}  // namespace tests
