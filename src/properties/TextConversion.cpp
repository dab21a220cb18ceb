// The runtime's functions report through the count they store; their error code is not looked
// at. Some store 0 for text that cannot be converted, some the largest size value.
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

bool hasFailed(std::size_t converted) { return converted == 0 || converted == SIZE_MAX; }

}  // namespace

std::string wideToNarrow(const wchar_t* text) {
    std::string result(kMaxBytesPerUnit * (std::wcslen(text) + 1), '\0');
    std::size_t converted = 0;
    wcstombs_s(&converted, result.data(), result.size(), text, result.size());
    result.resize(hasFailed(converted) ? 0 : converted);
    return result;
}

std::string wstringToString(const std::wstring& text) {
    std::string result(kMaxBytesPerUnit * (text.size() + 1), '\0');
    std::size_t converted = 0;
    wcstombs_s(&converted, result.data(), result.size(), text.c_str(), result.size());
    result.resize(text.size());
    return result;
}

std::wstring stringToWstring(const std::string& text) {
    const std::size_t size = std::strlen(text.c_str()) + 1;
    std::wstring result(size, L'\0');
    std::size_t converted = 0;
    mbstowcs_s(&converted, result.data(), result.size(), text.c_str(), size);
    if (hasFailed(converted)) {
        // The text that callers know; standard libraries word a failed resize differently.
        throw std::length_error("string too long");
    }
    result.resize(converted - 1);
    return result;
}

}  // namespace Quend::Framework::Text
