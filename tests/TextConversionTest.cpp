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
};

struct Row {
    const char* locale;
    std::wstring wide;
    std::string narrow;  // with the NUL that counts; empty if a unit cannot be converted
    std::string sized;   // as many bytes as units
};

// What the model leaves out: long text, and code pages.
TEST_F(TextConversion, FollowsTheLocale) {
    const Row rows[] = {
        {"C", std::wstring(5000, L'x'), std::string(5000, 'x') + '\0', std::string(5000, 'x')},
#ifdef _WIN32
        {".1252", L"\x20ac 5", "\x80 5\0"s, "\x80 5"},
        {".1252", L"\x0416", "", "\0"s},
        {".932", L"\x3042\x3044", "\x82\xa0\x82\xa2\0"s, "\x82\xa0"},
        {".932", L"a\x3042", "a\x82\xa0\0"s, "a\x82"},
        {".932", L"\x3042\0z"s, "\x82\xa0\0"s, "\x82\xa0\0"s},
        {".932", L"\x3042\x0e01", "", "\0\0"s},
#endif
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.locale << " " << testing::PrintToString(row.wide));
        ASSERT_NE(std::setlocale(LC_ALL, row.locale), nullptr);
        EXPECT_EQ(wideToNarrow(row.wide.c_str()), row.narrow);
        EXPECT_EQ(wstringToString(row.wide), row.sized);
        if (!row.narrow.empty()) {
            EXPECT_EQ(stringToWstring(row.narrow + '\x82'), row.wide.c_str());
        }
    }
#ifdef _WIN32  // .932, as the last row
    for (const char* const cutOff : {"a\x82", "\x82", "\x82\x01z"}) {
        try {
            stringToWstring(cutOff);
            ADD_FAILURE() << cutOff;
        } catch (const std::length_error& error) {  // as a failed resize throws, too
            EXPECT_STREQ(error.what(), "string too long");
        }
    }
#endif
}

TEST_F(TextConversion, MatchesModelOverRandomText) {
    tests::runOnRandomInputs(&tests::checkConversions);
}

}  // namespace
