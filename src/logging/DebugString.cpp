#include "logging/DebugString.h"

#include <cstddef>
#include <cstdlib>

namespace Quend::Framework::Logging {

bool readDebugString(std::wstring& setting) {
    constexpr const wchar_t* kName = L"QUEND_OUTPUT_DEBUG_STRING";
    std::size_t size = 0;  // counts the terminator; 0 for a variable that does not exist
    if (_wgetenv_s(&size, nullptr, 0, kName) != 0 || size == 0) {
        return false;
    }
    setting.resize(size);
    if (_wgetenv_s(&size, setting.data(), setting.size(), kName) != 0) {
        return false;
    }
    setting.pop_back();
    return true;
}

}  // namespace Quend::Framework::Logging
