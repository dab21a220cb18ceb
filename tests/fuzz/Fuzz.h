// What the fuzz targets share: an input that is read as a row of decisions, and the check.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// Ends the process with the place and the condition; libFuzzer then keeps the input.
#define FUZZ_CHECK(condition)                                                            \
    do {                                                                                 \
        if (!(condition)) {                                                              \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                \
        }                                                                                \
    } while (false)

class FuzzInput {
 public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : bytes(data, data + size) {}

    bool isAtEnd() const { return position == bytes.size(); }
    // 0 to n - 1; 0 at the end.
    unsigned below(unsigned n) { return isAtEnd() ? 0 : bytes[position++] % n; }
    // Up to `longest` characters of `alphabet`, so short and few that inputs meet the same again.
    template <typename Char>
    std::basic_string<Char> word(const std::basic_string<Char>& alphabet, unsigned longest) {
        std::basic_string<Char> result(below(longest + 1), Char());
        for (Char& character : result) {
            character = alphabet[below(static_cast<unsigned>(alphabet.size()))];
        }
        return result;
    }

 private:
    std::vector<std::uint8_t> bytes;
    std::size_t position = 0;
};
