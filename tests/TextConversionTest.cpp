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

struct Word {
    const char* locale;
    std::wstring wide;
    std::string narrow;
};

TEST(TextConversion, FollowsTheLocaleOfTheProcess) {
    const std::set<std::string> locales(tests::kLocales.begin(), tests::kLocales.end());
    for (const Word& word : {
             Word{.locale = ".1252", .wide = L"f\u00FCr", .narrow = "f\xFCr"},
             Word{.locale = ".932", .wide = L"\u3042", .narrow = "\x82\xA0"},
             Word{.locale = tests::kUtf8, .wide = L"f\u00FCr", .narrow = "f\xC3\xBCr"},
             Word{.locale = tests::kUtf8, .wide = L"\u20AC", .narrow = "\xE2\x82\xAC"},
         }) {
        SCOPED_TRACE(word.locale);
        const bool isThere = std::setlocale(LC_CTYPE, word.locale) != nullptr;
        EXPECT_EQ(isThere, locales.contains(word.locale));
        if (!isThere) {
            continue;
        }
        EXPECT_EQ(wideToNarrow(word.wide.c_str()), word.narrow + '\0');
        EXPECT_EQ(stringToWstring(word.narrow), word.wide);
        // Cut off after as many bytes as the argument has units.
        EXPECT_EQ(wstringToString(word.wide), word.narrow.substr(0, word.wide.size()));
    }
    // Widened only: Wine 10's UCRT narrows each half of such a pair alone.
    if (std::setlocale(LC_CTYPE, tests::kUtf8) != nullptr) {
        EXPECT_EQ(stringToWstring("\xF0\x9F\x98\x80"), L"\U0001F600");
    }
    std::setlocale(LC_CTYPE, "C");
}

TEST(TextConversion, FailsWhereTheLocaleHasNoSuchCharacter) {
    EXPECT_EQ(wideToNarrow(L"\u3042 or not"), "");
    EXPECT_EQ(wstringToString(L"\u3042\u3042"), "\0\0"s);

#ifdef _WIN32
    std::setlocale(LC_CTYPE, ".932");
#else
    std::setlocale(LC_CTYPE, tests::kUtf8);
#endif
    try {
        stringToWstring("\xE0");  // the first byte of a character
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "string too long");
    }
    std::setlocale(LC_CTYPE, "C");
}

TEST(TextConversion, MatchesModelOverRandomText) {
    tests::runOnRandomInputs(&tests::checkConversions);
    std::setlocale(LC_CTYPE, "C");
}

}  // namespace
