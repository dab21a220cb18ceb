#include "properties/TextConversion.h"

#include <gtest/gtest.h>

#include <clocale>
#include <stdexcept>
#include <string>

#include "models/Conversions.h"

namespace {

using namespace Quend::Framework::Text;
using namespace std::string_literals;

class TextConversion : public testing::Test {
 public:
    ~TextConversion() override { std::setlocale(LC_ALL, "C"); }

 protected:
    static void use(const char* locale) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
    }
};

struct WideRow {
    const char* locale;
    std::wstring text;
    std::string narrow;  // with the NUL that counts
    std::string sized;   // as many bytes as units
};

TEST_F(TextConversion, WideToNarrowCountsItsNulAndWstringToStringKeepsTheLength) {
    const WideRow rows[] = {
        {"C", L"", "\0"s, ""},
        {"C", L"abc", "abc\0"s, "abc"},
        {"C", L"a\0c"s, "a\0"s, "a\0\0"s},
        {"C", L"\0"s, "\0"s, "\0"s},
        {"C", L"ab\x0416", "", "\0\0\0"s},
        {"C", std::wstring(5000, L'x'), std::string(5000, 'x') + '\0', std::string(5000, 'x')},
#ifdef _WIN32
        {"C", L"\x00e9\x00ff", "\xe9\xff\0"s, "\xe9\xff"},
        {".1252", L"\x20ac", "\x80\0"s, "\x80"},
        {".1252", L"\x0416", "", "\0"s},
        {".932", L"\x3042\x3044", "\x82\xa0\x82\xa2\0"s, "\x82\xa0"},
        {".932", L"a\x3042", "a\x82\xa0\0"s, "a\x82"},
        {".932", L"\x3042\0z"s, "\x82\xa0\0"s, "\x82\xa0\0"s},
        {".932", L"\x3042\x0e01", "", "\0\0"s},
#else  // the room is four bytes a unit
        {"C.UTF-8", L"\u20ac\u20ac", "\u20ac\u20ac\0"s, "\xe2\x82"},
        {"C.UTF-8", L"\U0001f600\U0001f600\U0001f600", "\U0001f600\U0001f600\U0001f600\0"s,
         "\xf0\x9f\x98"},
#endif
    };
    for (const WideRow& row : rows) {
        SCOPED_TRACE(testing::Message() << row.locale << " " << testing::PrintToString(row.text));
        use(row.locale);
        EXPECT_EQ(wideToNarrow(row.text.c_str()), row.narrow);
        EXPECT_EQ(wstringToString(row.text), row.sized);
    }
}

struct NarrowRow {
    const char* locale;
    std::string text;
    const wchar_t* wide;  // null: not valid text
};

TEST_F(TextConversion, StringToWstringGivesTheConvertedUnitsOrThrows) {
    const NarrowRow rows[] = {
        {"C", "", L""},
        {"C", "abc", L"abc"},
        {"C", "ab\0cd"s, L"ab"},
        {"C", "\0"s, L""},
#ifdef _WIN32
        {"C", "\xe9", L"\x00e9"},
        {".1252", "\x80 5", L"\x20ac 5"},
        {".932", "\x82\xa0\x82\xa2z", L"\x3042\x3044z"},
        {".932", "\x82\xa0\0\x82"s, L"\x3042"},
        {".932", "a\x82", nullptr},
        {".932", "\x82", nullptr},
        {".932", "\x82\x01z", nullptr},
#else
        {"C", "\xe9", nullptr},
#endif
    };
    for (const NarrowRow& row : rows) {
        SCOPED_TRACE(testing::Message() << row.locale << " " << testing::PrintToString(row.text));
        use(row.locale);
        try {
            const std::wstring wide = stringToWstring(row.text);
            ASSERT_NE(row.wide, nullptr) << "accepted";
            EXPECT_EQ(wide, row.wide);
        } catch (const std::length_error& error) {
            EXPECT_EQ(row.wide, nullptr);
            EXPECT_STREQ(error.what(), "string too long");
        }
    }
}

TEST_F(TextConversion, MatchesModelOverRandomText) {
    tests::runOnRandomInputs(&tests::checkConversions);
}

}  // namespace
