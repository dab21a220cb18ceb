#include "support/Test.h"

#include "models/Conversions.h"

using namespace Quend::Framework::Text;

TEST(TextConversion, MatchesModelOverRandomText) {
    tests::runOnRandomInputs(&tests::checkConversions);
    std::setlocale(LC_CTYPE, "C");
}

#ifdef _WIN32
namespace {

#if defined(__MINGW32__) && !defined(_UCRT)
constexpr bool kHasUtf8 = false;  // msvcrt refuses such a locale
#else
constexpr bool kHasUtf8 = true;
#endif

struct Word {
    const char* locale;
    std::wstring wide;
    std::string narrow;
};

}  // namespace

TEST(TextConversion, FollowsTheLocaleOfTheProcess) {
    const std::vector<Word> words = {
        {.locale = ".1252", .wide = L"f\u00FCr", .narrow = "f\xFCr"},
        {.locale = ".932", .wide = L"\u3042", .narrow = "\x82\xA0"},
        {.locale = ".UTF-8", .wide = L"f\u00FCr", .narrow = "f\xC3\xBCr"},
        {.locale = ".UTF-8", .wide = L"\u20AC", .narrow = "\xE2\x82\xAC"},
        {.locale = ".UTF-8", .wide = L"\U0001F600", .narrow = "\xF0\x9F\x98\x80"},
    };
    for (const Word& word : words) {
        SCOPED_TRACE(word.locale);
        if (std::setlocale(LC_CTYPE, word.locale) == nullptr) {
            EXPECT_STREQ(word.locale, ".UTF-8");
            EXPECT_FALSE(kHasUtf8);
            continue;
        }
        EXPECT_EQ(wideToNarrow(word.wide.c_str()), word.narrow + '\0');
        EXPECT_EQ(wstringToString(word.wide), word.narrow.substr(0, word.wide.size()));
        EXPECT_EQ(stringToWstring(word.narrow), word.wide);
    }
    std::setlocale(LC_CTYPE, "C");
}
#endif
