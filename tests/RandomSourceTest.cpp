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

TEST(RandomSource, LoadingSeedsFromTheThousandMilliseconds) {
    ASSERT_EQ(randomCallCounter, 0U) << "another test ran in this process";
    const auto first = draw(8);
    unsigned seed = 0;
    while (seed < 1000 && predict(seed, first.size(), 0) != first) {
        ++seed;
    }
    ASSERT_LT(seed, 1000U);
    randomCallCounter = 0;
    const auto expected = predict(seed, 5000, 0);
    std::srand(seed);
    EXPECT_EQ(draw(5000), expected);
}

TEST(RandomSource, SumWrapsAt65536AndTheCounterAt32Bits) {
    for (const std::uint32_t counter : {40'000U, 65'530U, 0xFFFFFFFCU}) {
        const auto expected = predict(7, 10, counter);
        std::srand(7);
        randomCallCounter = counter;
        EXPECT_EQ(draw(10), expected);
        EXPECT_EQ(randomCallCounter, counter + 10);
    }
}

TEST(RandomSource, ThreadsShareTheCounter) {
    randomCallCounter = 0;
    tests::inThreads(8, [](unsigned) { draw(20'000); });
    EXPECT_EQ(randomCallCounter, 160'000U);
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
