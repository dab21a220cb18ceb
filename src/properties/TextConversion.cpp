// Only the count that the runtime's functions store is used, not their error code. For text that
// cannot be converted, some runtimes store 0 and some the largest size value. Behind the terminator
// they may leave anything in the buffer.
#include "properties/TextConversion.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <stdexcept>

namespace Quend::Framework::Text {
namespace {

// The most bytes that one code unit takes in any encoding of the runtime.
constexpr std::size_t kMaxBytesPerUnit = 4;

// With the terminator; 0 after a failure.
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
        // Callers know this text; standard libraries word a failed resize differently.
        throw std::length_error("string too long");
    }
    result.resize(converted - 1);
    return result;
}

}  // namespace Quend::Framework::Text
