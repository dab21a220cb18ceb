#pragma once

#include <windows.h>

#include <array>
#include <cstddef>

namespace tests {

// The allocated blocks on all heaps of the process: one that is lost counts one.
inline std::size_t heapBlocks() {
    std::array<HANDLE, 100> heaps{};
    const DWORD count = GetProcessHeaps(heaps.size(), heaps.data());
    std::size_t blocks = 0;
    for (DWORD i = 0; i < count; ++i) {
        HeapLock(heaps.at(i));
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps.at(i), &entry) != 0) {
            blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1 : 0;
        }
        HeapUnlock(heaps.at(i));
    }
    return blocks;
}

}  // namespace tests
