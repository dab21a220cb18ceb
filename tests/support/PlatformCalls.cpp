#include "support/PlatformCalls.h"

#include <cstring>

namespace tests {
namespace {

template <typename T>
T* at(HMODULE module, ULONGLONG offset) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(module) + offset);
}

void** findImport(HMODULE module, const char* name) {
    const auto* nt = at<IMAGE_NT_HEADERS>(
        module, static_cast<ULONGLONG>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const auto& table = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* library = at<IMAGE_IMPORT_DESCRIPTOR>(module, table.VirtualAddress);
         library->Name != 0; ++library) {
        auto* slot = at<void*>(module, library->FirstThunk);
        for (auto* entry = at<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
             entry->u1.AddressOfData != 0; ++entry, ++slot) {
            const auto* import = at<IMAGE_IMPORT_BY_NAME>(module, entry->u1.AddressOfData);
            if (!IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal) &&
                std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0) {
                return slot;
            }
        }
    }
    ADD_FAILURE() << name << " is not imported, so nothing is replaced";
    static void* none = nullptr;  // what is replaced instead
    return &none;
}

}  // namespace

ImportPatch::ImportPatch(const char* name, void* replacement, HMODULE module)
    : slot(findImport(module != nullptr ? module : GetModuleHandleW(nullptr), name)),
      other(replacement) {
    exchange();
}

void ImportPatch::exchange() {
    DWORD protection = 0;
    VirtualProtect(static_cast<void*>(slot), sizeof(*slot), PAGE_READWRITE, &protection);
    std::swap(*slot, other);
    VirtualProtect(static_cast<void*>(slot), sizeof(*slot), protection, &protection);
}

}  // namespace tests
