#include "support/ProcessFigures.h"

#include <array>
#include <stdexcept>

namespace tests {
namespace {

// Asks for every value that a handle could have, until so many in a row are free. Free values are
// given out again, so no gap is longer than the number of handles that were once open together.
std::size_t countHandles() {
    constexpr LONG kStep = 4;
    constexpr LONG kGap = 1000 * kStep;
    std::size_t count = 0;
    LONG last = 0;
    for (LONG value = kStep; value <= last + kGap; value += kStep) {
        DWORD flags = 0;
        if (GetHandleInformation(LongToHandle(value), &flags) != FALSE) {
            ++count;
            last = value;
        }
    }
    return count;
}

// The runtime opens handles of its own when the first exception is thrown.
bool hasThrownOnce() {
    try {
        throw std::runtime_error("the first");
    } catch (const std::runtime_error&) {
        return true;
    }
}

}  // namespace

std::size_t handleCount() {
    [[maybe_unused]] static const bool isSettled = hasThrownOnce();
    return countHandles();
}

std::size_t heapBlocks() {
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

DWORD nextTlsIndex() {
    const DWORD index = TlsAlloc();
    TlsFree(index);
    return index;
}

std::size_t committedBytes() {
    std::size_t committed = 0;
    MEMORY_BASIC_INFORMATION region;
    for (char* address = nullptr; VirtualQuery(address, &region, sizeof(region)) != 0;
         address = static_cast<char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) {
            committed += region.RegionSize;
        }
    }
    return committed;
}

}  // namespace tests
