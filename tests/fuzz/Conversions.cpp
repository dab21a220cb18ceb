// The three text conversions against their sizing rules, over an encoder and a decoder of our
// own. The first byte chooses the locale, the rest is the text: as it stands for narrow text,
// three bytes a unit for wide text.
#include <clocale>
#include <optional>
#include <stdexcept>

#include "Fuzz.h"
#include "properties/TextConversion.h"

namespace {

using namespace Quend::Framework::Text;

bool isUtf8 = false;  // else ASCII

// Up to 21 bits: this C library goes beyond Unicode's last character, but not into surrogates.
std::optional<std::string> encode(wchar_t wide) {
    const auto unit = static_cast<std::uint32_t>(wide);
    const auto byte = [](std::uint32_t bits) { return static_cast<char>(bits); };
    const auto next = [&](int shift) { return byte(0x80 | ((unit >> shift) & 0x3F)); };
    if (unit < 0x80) {
        return std::string{byte(unit)};
    }
    if (!isUtf8 || (unit >= 0xD800 && unit < 0xE000)) {
        return std::nullopt;
    }
    if (unit < 0x800) {
        return std::string{byte(0xC0 | (unit >> 6)), next(0)};
    }
    if (unit < 0x10000) {
        return std::string{byte(0xE0 | (unit >> 12)), next(6), next(0)};
    }
    return std::string{byte(0xF0 | (unit >> 18)), next(12), next(6), next(0)};
}

// Of the text before the first NUL, as are the next.
std::optional<std::string> encodeAll(const std::wstring& text) {
    std::string result;
    for (const wchar_t unit : text.substr(0, text.find(L'\0'))) {
        const auto bytes = encode(unit);
        if (!bytes) {
            return std::nullopt;
        }
        result += *bytes;
    }
    return result;
}

// Takes the bits out of each sequence and accepts what encodes to the same bytes again.
std::optional<std::wstring> decodeAll(const std::string& text) {
    const std::string read = text.substr(0, text.find('\0'));
    std::wstring result;
    for (std::size_t i = 0; i < read.size();) {
        const auto lead = static_cast<unsigned char>(read[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        std::uint32_t unit = length == 1 ? lead : lead & (0x7FU >> length);
        for (const char byte : read.substr(i + 1, length - 1)) {
            unit = (unit << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
        }
        if (encode(static_cast<wchar_t>(unit)) != read.substr(i, length)) {
            return std::nullopt;
        }
        result += static_cast<wchar_t>(unit);
        i += length;
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    isUtf8 = data[0] % 2 == 1;
    std::setlocale(LC_CTYPE, isUtf8 ? "C.UTF-8" : "C");

    std::wstring wide;
    for (std::size_t i = 1; i + 2 < size; i += 3) {
        const int unit = (data[i] & 0x1F) << 16 | data[i + 1] << 8 | data[i + 2];
        // On tag characters, this C library's own conversion to ASCII fails an assertion.
        wide += unit >> 7 == 0xE0000 >> 7 ? L'?' : static_cast<wchar_t>(unit);
    }
    const auto encoded = encodeAll(wide);
    FUZZ_CHECK(wideToNarrow(wide.c_str()) == (encoded ? *encoded + '\0' : std::string()));
    std::string sized = encoded.value_or("");
    sized.resize(wide.size());
    FUZZ_CHECK(wstringToString(wide) == sized);

    std::string narrow(data + 1, data + size);
    for (char& byte : narrow) {
        if (static_cast<unsigned char>(byte) >= 0xF8) {  // no lead of up to 21 bits
            byte = '?';
        }
    }
    const auto decoded = decodeAll(narrow);
    try {
        FUZZ_CHECK(stringToWstring(narrow) == decoded);
    } catch (const std::length_error& error) {
        FUZZ_CHECK(!decoded && std::string(error.what()) == "string too long");
    }
    return 0;
}
