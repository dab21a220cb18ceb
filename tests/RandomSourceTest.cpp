#include "core/RandomSource.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include <Quend/Framework/Framework.h>

#include "support/Threads.h"

namespace {

using Quend::Framework::Framework::randomCallCounter;
using Quend::Framework::Framework::randomNumber;

// What randomNumber gives after srand(seed), the counter standing at `counter`.
std::vector<unsigned short> predict(unsigned seed, std::size_t count, std::uint32_t counter) {
    std::srand(seed);
    std::vector<unsigned short> numbers;
    while (numbers.size() < count) {
        numbers.push_back(
            static_cast<unsigned short>(static_cast<unsigned>(std::rand()) + counter++));
    }
    return numbers;
}

std::vector<unsigned short> draw(std::size_t count) {
    std::vector<unsigned short> numbers;
    while (numbers.size() < count) {
        numbers.push_back(randomNumber());
    }
    return numbers;
}

TEST(RandomSource, SumWrapsAt65536AndTheCounterAt32Bits) {
    for (const std::uint32_t counter : {0U, 40'000U, 65'530U, 0xFFFFFFFCU}) {
        const auto expected = predict(7, 10, counter);
        std::srand(7);
        randomCallCounter = counter;
        EXPECT_EQ(draw(10), expected);
        EXPECT_EQ(randomCallCounter, counter + 10);
    }
}

#ifdef _WIN32
TEST(RandomSource, OtherThreadsDrawFromTheDefaultSeed) {
    randomCallCounter = 100;
    tests::inThreads(1, [](unsigned) {
        EXPECT_EQ(draw(3), (std::vector<unsigned short>{41 + 100, 18467 + 101, 6334 + 102}));
    });
}
#endif

}  // namespace
