#include "logging/MessageText.h"

#include <gtest/gtest.h>

#include <iomanip>
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
            switch (random() % (round % 2 == 0 ? 7 : 14)) {  // every other round: the stream too
                case 0:
                    insert("a literal");
                    break;
                case 1:
                    insert(std::string(value % 80, 'x'));
                    break;
                case 2:
                    insert(static_cast<int>(value));
                    break;
                case 3:
                    insert(value);
                    break;
                case 4:
                    insert(std::numeric_limits<long long>::min() + value);
                    break;
                case 5:
                    insert(static_cast<short>(value));
                    break;
                case 6:
                    insert(static_cast<char>('a' + value % 26));
                    break;
                case 7:
                    insert(static_cast<unsigned char>('A' + value % 26));
                    break;
                case 8:
                    insert(value % 2 == 0);
                    break;
                case 9:
                    insert(value / 7.0);
                    break;
                case 10:
                    insert(static_cast<const void*>(&text));
                    break;
                case 11:
                    insert(std::setw(static_cast<int>(value % 20)));
                    break;
                case 12:
                    insert(value % 2 == 0 ? std::hex : std::showpos);
                    break;
                default:
                    if (value % 8 == 0) {
                        insert(nullText);
                    }
            }
        }
        EXPECT_EQ(text.get(), stream.str());
    }
    std::locale::global(std::locale::classic());
}

}  // namespace
