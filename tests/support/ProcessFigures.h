// What a leak would show in: figures of the running process.
#pragma once

#include <windows.h>

#include <cstddef>

namespace tests {

// The handles this process holds. Not GetProcessHandleCount, which always answers 0 under Wine, nor
// the system-wide list of handles, which crashes Wine's server now and then.
std::size_t handleCount();

// The allocated blocks on all heaps: one that is lost counts one.
std::size_t heapBlocks();

// The TLS index that the next TlsAlloc gives; grows with each one leaked.
DWORD nextTlsIndex();

// The bytes of committed private memory.
std::size_t committedBytes();

}  // namespace tests
