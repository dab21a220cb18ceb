// What a leak would show in: figures of the running process.
#pragma once

#include "support/Test.h"

namespace tests {

// The handles this process holds: asks for every value that one of the first 2,000 could have. Not
// GetProcessHandleCount, which always answers 0 under Wine, nor the system-wide list of handles,
// which crashes Wine's server now and then.
inline std::size_t handleCount() {
    try {
        throw 0;  // at the first exception the runtime opens handles of its own
    } catch (int) {
    }
    std::size_t count = 0;
    for (LONG value = 4; value <= 8000; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(LongToHandle(value), &flags) != FALSE ? 1U : 0U;
    }
    return count;
}

// The allocated blocks on all heaps: one that is lost counts one.
inline std::size_t heapBlocks() {
    std::vector<HANDLE> heaps(100);
    heaps.resize(GetProcessHeaps(100, heaps.data()));
    std::size_t blocks = 0;
    for (HANDLE heap : heaps) {
        HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry) != 0) {
            blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1 : 0;
        }
        HeapUnlock(heap);
    }
    return blocks;
}

// The TLS indices that are left. Not the one that TlsAlloc gives next: while that one fills a gap,
// any number above it may leak unseen.
inline std::size_t freeTlsIndices() {
    std::vector<DWORD> taken;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        taken.push_back(index);
    }
    std::for_each(taken.begin(), taken.end(), TlsFree);
    return taken.size();
}

}  // namespace tests
