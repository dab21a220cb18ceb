#include "support/ProcessFigures.h"

#include <winternl.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace tests {
namespace {

struct HandleEntry {
    ULONG processId;
    BYTE objectType;
    BYTE flags;
    USHORT handle;
    void* object;
    ULONG access;
};

std::size_t countHandles() {
    constexpr auto kSystemHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
    std::vector<char> buffer(1 << 20);
    ULONG needed = 0;
    while (NtQuerySystemInformation(kSystemHandleInformation, buffer.data(),
                                    static_cast<ULONG>(buffer.size()), &needed) != 0) {
        if (buffer.size() > (1U << 28)) {
            throw std::runtime_error("the list of handles cannot be had");
        }
        buffer.resize(buffer.size() * 2);
    }
    ULONG count = 0;
    std::memcpy(&count, buffer.data(), sizeof(count));
    std::size_t ours = 0;
    for (std::size_t i = 0; i < count; ++i) {
        HandleEntry entry{};
        std::memcpy(&entry, buffer.data() + alignof(HandleEntry) + i * sizeof(entry),
                    sizeof(entry));
        ours += entry.processId == GetCurrentProcessId() ? 1U : 0U;
    }
    return ours;
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
