#include "core/RandomSource.h"

#include "support/Test.h"

#include <Quend/Framework/Framework.h>

namespace {

using Quend::Framework::Framework::randomCallCounter;
using Quend::Framework::Framework::randomNumber;

TEST(RandomSource, SumWrapsAt65536AndTheCounterAt32Bits) {
    for (const std::uint32_t counter : {0U, 40'000U, 65'530U, 0xFFFFFFFCU}) {
        std::array<std::uint32_t, 10> expected{};
        std::srand(7);
        for (std::uint32_t i = 0; i < expected.size(); ++i) {
            expected.at(i) = (static_cast<std::uint32_t>(std::rand()) + counter + i) & 0xFFFF;
        }
        std::srand(7);
        randomCallCounter = counter;
        for (const std::uint32_t each : expected) {
            EXPECT_EQ(randomNumber(), each);
        }
        EXPECT_EQ(randomCallCounter, counter + 10);
    }
}

}  // namespace
