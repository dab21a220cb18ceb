// The three text conversions against their sizing rules; the C library converts the characters.
#pragma once

#include <clocale>
#include <cstdlib>

#include "models/Input.h"
#include "properties/TextConversion.h"

namespace tests {

// The locales that the C runtime has, of those that the tests use.
#ifndef _WIN32
constexpr const char* kUtf8 = "C.UTF-8";
constexpr std::initializer_list<const char*> kLocales = {"C", kUtf8};
#else
constexpr const char* kUtf8 = ".UTF-8";
#if defined(_UCRT) || defined(_MSC_VER)
constexpr std::initializer_list<const char*> kLocales = {"C", ".1252", ".932", kUtf8};
#else
constexpr std::initializer_list<const char*> kLocales = {"C", ".1252", ".932"};  // msvcrt
#endif
#endif

// Converts the text before the first NUL, with room for anything. Nothing if a part is not valid:
// the runtimes store 0 as its size then, or the largest value.
template <typename To, typename Text>
std::optional<std::basic_string<To>> convert(const Text& text, auto function) {
    std::basic_string<To> room(4 * text.size() + 1, To());
    std::size_t size = 0;
    function(&size, room.data(), room.size(), text.c_str(), room.size() - 1);
    if (size == 0 || size > room.size()) {
        return std::nullopt;
    }
    return room.substr(0, size - 1);
}

inline void checkConversions(Input input) {
    using namespace Quend::Framework::Text;
    std::setlocale(LC_CTYPE, input.oneOf(kLocales));
    // The units of the wide text are below a limit. Below 1, they are all the same instead.
    const unsigned limit = input.oneOf({0x1U, 0x80U, 0x100U, 0x800U, 0x10000U, 0x200000U});
    const unsigned same = input.oneOf({0x7AU, 0x20ACU, 0x3042U, 0x1F600U});
    std::string narrow;
    std::wstring wide;
    while (!input.isAtEnd()) {
        unsigned unit = 0;
        for (int i = 0; i < 3; ++i) {
            const std::uint8_t byte = input.byte();
            narrow += static_cast<char>(byte);
            unit = unit << 8 | byte;
        }
        unit %= limit;
        // On tag characters, a conversion of glibc's to ASCII fails an assertion.
        const bool isTag = unit >= 0xE0000 && unit < 0xE0080;
        if (limit == 1 || isTag) {
            unit = same;
        }
        wide += static_cast<wchar_t>(unit);
    }

    const auto converted = convert<char>(wide, [](auto... all) { return wcstombs_s(all...); });
    MODEL_CHECK(wideToNarrow(wide.c_str()) == (converted ? *converted + '\0' : std::string()));
    std::string sized = converted.value_or("");
    sized.resize(wide.size());
    MODEL_CHECK(wstringToString(wide) == sized);

    for (const std::string& text : {narrow, sized}) {  // any bytes, and nearly always valid ones
        const auto expected =
            convert<wchar_t>(text, [](auto... all) { return mbstowcs_s(all...); });
        try {
            MODEL_CHECK(stringToWstring(text) == expected);
        } catch (const std::length_error& error) {
            MODEL_CHECK(!expected && error.what() == std::string("string too long"));
        }
    }
}

}  // namespace tests
