#include "logging/MessageText.h"

#include <gtest/gtest.h>

#include <functional>
#include <iomanip>
#include <iterator>
#include <limits>
#include <random>
#include <string>

namespace {

using Quend::Framework::Logging::MessageText;

struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// Whatever is inserted in whatever order, nobody can tell it from a stream.
TEST(MessageText, EqualsAStreamOverRandomInsertions) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::locale grouped(std::locale::classic(), new Grouping);
    const char* const nullText = nullptr;
    for (int round = 0; round < 20'000 && !HasFailure(); ++round) {
        std::locale::global(round % 8 == 0 ? grouped : std::locale::classic());
        MessageText text;
        std::ostringstream stream;
        const auto insert = [&](const auto& value) {
            text.insert(value);
            stream << value;
        };
        for (unsigned count = random() % 12; count > 0; --count) {
            const unsigned value = random();
            const auto small = static_cast<char>(value % 26);
            const std::function<void()> insertions[] = {
                [&] { insert("a literal"); },
                [&] { insert(std::string(value % 80, 'x')); },
                [&] { insert(static_cast<int>(value)); },
                [&] { insert(value); },
                [&] { insert(std::numeric_limits<long long>::min() + value); },
                [&] { insert(static_cast<short>(value)); },
                [&] { insert(static_cast<char>('a' + small)); },
                // From here on, they make the stream.
                [&] { insert(static_cast<unsigned char>('A' + small)); },
                [&] { insert(value % 2 == 0); },
                [&] { insert(value / 7.0); },
                [&] { insert(static_cast<const void*>(&text)); },
                [&] { insert(std::setw(small)); },
                [&] { insert(value % 2 == 0 ? std::hex : std::showpos); },
                [&] { insert(value % 8 == 0 ? nullText : "another"); },
            };
            insertions[random() % (round % 2 == 0 ? 7 : std::size(insertions))]();
        }
        EXPECT_EQ(text.get(), stream.str());
    }
    std::locale::global(std::locale::classic());
}

}  // namespace
