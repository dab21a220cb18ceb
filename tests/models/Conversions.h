// The three text conversions against their sizing rules; the C library converts the characters.
#pragma once

#include <climits>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <optional>
#include <stdexcept>
#include <string>

#include "models/Input.h"
#include "properties/TextConversion.h"

namespace tests {

// Both convert the text before the first NUL, a character at a time; nothing if one cannot be.
inline std::optional<std::string> toNarrow(const std::wstring& text) {
    std::string result;
    std::mbstate_t state{};
    for (const wchar_t unit : text.substr(0, text.find(L'\0'))) {
        char bytes[MB_LEN_MAX];
        std::size_t count = 0;
        if (wcrtomb_s(&count, bytes, sizeof(bytes), unit, &state) != 0) {
            return std::nullopt;
        }
        result.append(bytes, count);
    }
    return result;
}

inline std::optional<std::wstring> toWide(const std::string& text) {
    std::wstring result;
    std::mbstate_t state{};
    for (const char* rest = text.c_str(); *rest != '\0';) {
        wchar_t unit = 0;
        const std::size_t count = std::mbrtowc(&unit, rest, std::strlen(rest), &state);
        if (count > MB_LEN_MAX) {
            return std::nullopt;
        }
        result += unit;
        rest += count;
    }
    return result;
}

inline void checkConversions(Input input) {
    using namespace Quend::Framework::Text;
#ifdef _WIN32  // in others, converting one character at a time finds look-alikes for more of them
    const std::initializer_list<const char*> locales = {"C"};
#else
    const std::initializer_list<const char*> locales = {"C", "C.UTF-8"};
#endif
    std::setlocale(LC_CTYPE, input.oneOf(locales));
    const unsigned mask = input.oneOf({0x7FU, 0xFFU, 0x7FFU, 0xFFFFU, 0x1FFFFFU});
    std::string narrow;
    std::wstring wide;
    while (!input.isAtEnd()) {
        unsigned unit = 0;
        for (int i = 0; i < 3; ++i) {
            narrow += static_cast<char>(input.byte());
            unit = (unit << 8 | static_cast<unsigned char>(narrow.back())) & mask;
        }
        // On tag characters, a conversion of glibc's to ASCII fails an assertion.
        wide += unit >> 7 == 0xE0000 >> 7 ? L'?' : static_cast<wchar_t>(unit);
    }

    const auto converted = toNarrow(wide);
    MODEL_CHECK(wideToNarrow(wide.c_str()) == (converted ? *converted + '\0' : std::string()));
    std::string sized = converted.value_or("");
    sized.resize(wide.size());
    MODEL_CHECK(wstringToString(wide) == sized);

    for (const std::string& text : {narrow, sized}) {  // any bytes, and nearly always valid ones
        const auto expected = toWide(text);
        try {
            MODEL_CHECK(stringToWstring(text) == expected);
        } catch (const std::length_error& error) {
            MODEL_CHECK(!expected && error.what() == std::string("string too long"));
        }
    }
}

}  // namespace tests
