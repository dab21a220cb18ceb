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
    std::srand(7);
    const int first = std::rand();
    const int second = std::rand();
    std::srand(7);
    randomCallCounter = 0xFFFFFFFF;
    EXPECT_EQ(randomNumber(), (first + 0xFFFF) & 0xFFFF);
    EXPECT_EQ(randomNumber(), second & 0xFFFF);
    EXPECT_EQ(randomCallCounter, 1U);
}

}  // namespace
