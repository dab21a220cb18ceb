// Shared by the command runner's tests and the child that they start.
#pragma once

#include <cstddef>
#include <string>

// What CommandChild's step "bytes" writes: a block of 128 or 256 bytes lost or doubled would show.
inline std::string childBytes(std::size_t size) {
    std::string bytes;
    while (bytes.size() < size) {
        bytes += static_cast<char>(bytes.size() + bytes.size() / 256);
    }
    return bytes;
}
