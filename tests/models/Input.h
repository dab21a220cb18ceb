// What the models share: an input that is read as a series of decisions, and the check. The tests
// run each model on random bytes, tests/fuzz on those of libFuzzer.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// Throws std::logic_error with the place and the condition.
#define MODEL_CHECK(condition) \
    ((condition) ? void() : tests::failCheck(__FILE__, __LINE__, #condition))

namespace tests {

[[noreturn]] inline void failCheck(const std::string& file, int line, const char* condition) {
    throw std::logic_error(file + ":" + std::to_string(line) + ": not so: " + condition);
}

class Input {
 public:
    explicit Input(std::vector<std::uint8_t> allBytes) : bytes(std::move(allBytes)) {}

    bool isAtEnd() const { return position == bytes.size(); }
    std::uint8_t byte() { return isAtEnd() ? std::uint8_t{0} : bytes[position++]; }
    template <typename T>
    T oneOf(std::initializer_list<T> table) {
        return table.begin()[byte() % table.size()];
    }

 private:
    std::vector<std::uint8_t> bytes;
    std::size_t position = 0;
};

inline void runOnRandomInputs(void (*model)(Input)) {
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    for (int round = 0; round < 1500; ++round) {
        std::vector<std::uint8_t> bytes(random() % 400);
        std::generate(bytes.begin(), bytes.end(),
                      [&] { return static_cast<std::uint8_t>(random()); });
        try {
            model(Input(bytes));
        } catch (const std::logic_error& failed) {
            throw std::logic_error(failed.what() + (", with seed " + std::to_string(seed)));
        }
    }
}

}  // namespace tests
