#include <Quend/Framework/Framework.h>

#include "core/RandomSource.h"
#include "support/Test.h"

namespace {

using Quend::Framework::Framework::randomCallCounter;
using Quend::Framework::Framework::randomNumber;

TEST(RandomSource, AddsTheNumberOfEarlierCallsToRand) {
    std::srand(2026);
    const int first = std::rand();
    const int second = std::rand();

    std::srand(2026);
    randomCallCounter = 0;
    EXPECT_EQ(randomNumber(), first & 0xFFFF);
    EXPECT_EQ(randomNumber(), (second + 1) & 0xFFFF);
}

TEST(RandomSource, SumWrapsAt65536AndTheCounterAt32Bits) {
    for (const std::uint32_t counter : {0U, 40'000U, 65'530U, 0xFFFFFFFCU}) {
        std::array<std::uint32_t, 10> drawn{};
        std::srand(7);
        std::generate(drawn.begin(), drawn.end(), std::rand);
        std::srand(7);
        randomCallCounter = counter;
        for (std::uint32_t i = 0; i < drawn.size(); ++i) {
            EXPECT_EQ(randomNumber(), (drawn.at(i) + counter + i) & 0xFFFF);
        }
        EXPECT_EQ(randomCallCounter, counter + 10);
    }
}

}  // namespace
