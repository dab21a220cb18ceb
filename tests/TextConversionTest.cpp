#include "models/Conversions.h"
#include "support/Test.h"

namespace {

using namespace Quend::Framework::Text;
using namespace std::string_literals;

TEST(TextConversion, ConvertsPlainText) {
    EXPECT_EQ(wideToNarrow(L"Good morning"), "Good morning\0"s) << "the size counts the terminator";
    EXPECT_EQ(wstringToString(L"Good morning"), "Good morning");
    EXPECT_EQ(stringToWstring("Good morning"), L"Good morning");
}

TEST(TextConversion, EndsAtANul) {
    EXPECT_EQ(wideToNarrow(L"Good\0day"), "Good\0"s);
    EXPECT_EQ(wstringToString(L"Good\0day"s), "Good\0\0\0\0"s) << "as long as the argument";
    EXPECT_EQ(stringToWstring("Good\0day"s), L"Good");
}

TEST(TextConversion, FollowsTheLocaleOfTheProcess) {
    struct Letter {
        const char* locale;
        const wchar_t* wide;
        std::string narrow;
    };
    for (const Letter& letter : {
             Letter{.locale = ".1252", .wide = L"\u00FC", .narrow = "\xFC"},
             Letter{.locale = ".932", .wide = L"\u3042", .narrow = "\x82\xA0"},
             Letter{.locale = tests::kUtf8, .wide = L"\u20AC", .narrow = "\xE2\x82\xAC"},
         }) {
        SCOPED_TRACE(letter.locale);
        if (std::ranges::count(tests::kLocales, std::string(letter.locale)) == 0) {
            continue;  // this C runtime does not have it
        }
        ASSERT_NE(std::setlocale(LC_CTYPE, letter.locale), nullptr);
        EXPECT_EQ(wideToNarrow(letter.wide), letter.narrow + '\0');
        EXPECT_EQ(stringToWstring(letter.narrow), letter.wide);
    }
    std::setlocale(LC_CTYPE, "C");
}

TEST(TextConversion, FailsWhereTheLocaleHasNoSuchCharacter) {
    EXPECT_EQ(wideToNarrow(L"\u3042 or not"), "");
    EXPECT_EQ(wstringToString(L"\u3042\u3042"), "\0\0"s);
}

TEST(TextConversion, MatchesModelOverRandomText) {
    tests::runOnRandomInputs(&tests::checkConversions);
    std::setlocale(LC_CTYPE, "C");
}

}  // namespace
