// The runtime's functions report through the count they store; their error code is not looked
// at. Some store 0 for text that cannot be converted, some the largest size value. What they
// leave in the buffer behind the terminator is anything, so it is cut off.
#include "properties/TextConversion.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <stdexcept>

namespace Quend::Framework::Text {
namespace {

// No code unit becomes more bytes than this in any encoding of the runtime.
constexpr std::size_t kMaxBytesPerUnit = 4;

// Of what was converted, terminator included; 0 for a failure.
std::size_t usableSize(std::size_t converted) { return converted == SIZE_MAX ? 0 : converted; }

}  // namespace

std::string wideToNarrow(const wchar_t* text) {
    std::string result(kMaxBytesPerUnit * (std::wcslen(text) + 1), '\0');
    std::size_t converted = 0;
    wcstombs_s(&converted, result.data(), result.size(), text, result.size());
    result.resize(usableSize(converted));
    return result;
}

std::string wstringToString(const std::wstring& text) {
    std::string result(kMaxBytesPerUnit * (text.size() + 1), '\0');
    std::size_t converted = 0;
    wcstombs_s(&converted, result.data(), result.size(), text.c_str(), result.size());
    result.resize(usableSize(converted));
    result.resize(text.size(), '\0');
    return result;
}

std::wstring stringToWstring(const std::string& text) {
    const std::size_t size = std::strlen(text.c_str()) + 1;
    std::wstring result(size, L'\0');
    std::size_t converted = 0;
    mbstowcs_s(&converted, result.data(), result.size(), text.c_str(), size);
    if (usableSize(converted) == 0) {
        // The text that callers know; standard libraries word a failed resize differently.
        throw std::length_error("string too long");
    }
    result.resize(converted - 1);
    return result;
}

}  // namespace Quend::Framework::Text
