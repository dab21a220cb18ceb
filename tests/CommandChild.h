// Shared by the command runner's tests and the child that they start.
#pragma once

#include <cstddef>
#include <string>

// What CommandChild's step "bytes" writes: a block of 128 or 256 bytes lost or doubled would show.
inline std::string childBytes(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i + i / 256) & 0xff);
    }
    return bytes;
}
