// Invariants: the count of a record is the number of objects that point to it, and the last of them
// closes its key. Everything that may throw comes before the platform opens a key, so that every
// open key has an owner. The UTF-16 copy of a name or text that was passed in is a temporary of the
// statement that hands it to the platform: when an error is raised, it is gone.
#include "Quend/RegistryAccess/Registry.h"

#include <shlwapi.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <source_location>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Quend/RegistryAccess/RegistryErrors.h"
#include "properties/TextConversion.h"

namespace Quend::RegistryAccess {
namespace {

using Framework::Text::stringToWstring;
using Framework::Text::wstringToString;

// What a result code is turned into. The code itself is not kept. Callers and their users know the
// texts, so they must not change.
struct Failure {
    void (*raise)(const char* message, std::int32_t line);
    const char* message;
};
struct Failures {
    Failure onAccessDenied{};          // 5, ERROR_ACCESS_DENIED
    Failure onOthers{};                // any other but 0
    Failure onNoMoreItems = onOthers;  // 259, ERROR_NO_MORE_ITEMS
};

constexpr const char* kCreationError = "Unable to create requested key.";

template <typename Error>
void raiseError(const char* message, std::int32_t line) {
    if constexpr (std::is_same_v<Error, Registry::CreationError>) {
        throw Error();  // which has its own message and line
    } else {
        throw Error(message, line);
    }
}

constexpr auto accessDenied = raiseError<Registry::AccessDenied>;
constexpr auto notFound = raiseError<Registry::NotFound>;
constexpr auto openError = raiseError<Registry::OpenError>;
constexpr auto creationError = raiseError<Registry::CreationError>;

// The constructor's text has no full stop, unlike that of openSubKey. Reading and writing a value
// give NotFound for 259 alone, which only a listing returns: for a value that does not exist the
// platform's code is 2.
constexpr Failures kConstructor = {
    {accessDenied, "Unable to open requested key"},
    {openError, "Unable to open requested key"},
};
constexpr Failures kReadValue = {
    // getIntValue, and getStringValue for each value it meets
    {accessDenied, "Not enough permissions to read value."},
    {openError, "Unable to open requested value."},
    {notFound, "The requested value was not found."},
};
constexpr Failures kWriteValue = {
    // setStringValue, setIntValue
    {accessDenied, "Not enough permissions to modify value."},
    {openError, "Unable to open requested value."},
    {notFound, "The value to update was not found."},
};
constexpr Failures kDeleteValue = {
    {accessDenied, "Not enough permissions to delete value."},
    {notFound, "Unable to delete given value."},
};
constexpr Failures kDeleteSubKey = {
    {accessDenied, "Not enough permissions to delete sub key."},
    {notFound, "Unable to delete given key."},
};
constexpr Failures kOpenSubKey = {
    {accessDenied, "Not enough permissions to read requested key."},
    {openError, "Unable to open requested key."},
};
constexpr Failures kCreateSubKey = {
    {accessDenied, "Not enough permissions to create requested key."},
    {creationError, kCreationError},
};
constexpr Failures kGetSubKeys = {
    {accessDenied, "Not enough permissions to read sub key enumeration."},
    {openError, "Unable to open enumerated sub key."},  // 259 ends the list, which is no failure
};

// An error names the line of the check, which is the line that calls one of these functions.
using Line = std::uint_least32_t;

void requireHandle(const void* handle, Line line = std::source_location::current().line()) {
    if (handle == nullptr) {
        throw Registry::NotInitialized("handle_ != 0: Invalid handle state.",
                                       static_cast<std::int32_t>(line));
    }
}

void requireSuccess(LSTATUS code, const Failures& failures,
                    Line line = std::source_location::current().line()) {
    if (code == ERROR_SUCCESS) {
        return;
    }
    const auto& failure = code == ERROR_ACCESS_DENIED   ? failures.onAccessDenied
                          : code == ERROR_NO_MORE_ITEMS ? failures.onNoMoreItems
                                                        : failures.onOthers;
    failure.raise(failure.message, static_cast<std::int32_t>(line));
}

void requireDword(DWORD type, Line line = std::source_location::current().line()) {
    if (type != REG_DWORD) {
        throw Registry::OpenError(
            "type == REG_DWORD: Only REG_DWORD value types are supported in getIntValue function.",
            static_cast<std::int32_t>(line));
    }
}

// The limit of every listing, in units for names and in bytes for data.
constexpr DWORD kListingLimit = 261;

// The text before the first NUL, or the whole buffer if there is none.
template <std::size_t Size>
std::wstring textIn(const std::array<wchar_t, Size>& buffer) {
    return {buffer.begin(), std::find(buffer.begin(), buffer.end(), L'\0')};
}

// Lists the values up to the one named `valueName` and stores its text in `text`. Returns success,
// or the first code of the listing that is not.
LSTATUS findText(HKEY key, std::wstring_view valueName, std::wstring& text) {
    for (DWORD index = 0;; ++index) {
        // Zeroed for each value, or the rest of a longer one would follow.
        std::array<wchar_t, kListingLimit> name{};
        std::array<wchar_t, kListingLimit / sizeof(wchar_t) + 1> data{};  // 262 bytes: whole units
        DWORD nameLength = kListingLimit;
        DWORD dataLength = kListingLimit;
        DWORD type = 0;
        const LSTATUS code = RegEnumValueW(key, index, name.data(), &nameLength, nullptr, &type,
                                           reinterpret_cast<BYTE*>(data.data()), &dataLength);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        if (std::wstring_view(name.data(), nameLength) == valueName) {
            text = textIn(data);
            return ERROR_SUCCESS;
        }
    }
}

LSTATUS readSubKeyName(HKEY key, DWORD index, std::wstring& subKeyName) {
    std::array<wchar_t, kListingLimit> buffer{};
    const LSTATUS code = RegEnumKeyW(key, index, buffer.data(), kListingLimit);
    subKeyName = textIn(buffer);
    return code;
}

// As many code units as `text` has bytes.
std::wstring paddedText(const std::vector<char>& text) {
    std::wstring padded = stringToWstring(std::string(text.begin(), text.end()));
    padded.resize(text.size(), L'\0');
    return padded;
}

}  // namespace

std::uint32_t textValueSize(std::size_t length) {
    if (length > UINT32_MAX / sizeof(wchar_t)) {
        throw std::length_error("string too long");
    }
    return static_cast<std::uint32_t>(length * sizeof(wchar_t));
}

Registry::CreationError::CreationError()
    : GenericRegistryError(kCreationError, std::source_location::current().line()) {}

Registry::Registry(HKEY parent, const std::string& path)
    : name(path.substr(path.rfind('\\') + 1)) {  // no backslash: npos + 1 is 0
    auto opened = std::make_unique<SharedHandle>();
    const LSTATUS code = RegOpenKeyW(parent, stringToWstring(path).c_str(), &opened->key);
    requireSuccess(code, kConstructor);
    handle_ = opened.release();
}

Registry::Registry(const Registry& other) : name(other.name), handle_(other.handle_) {
    if (handle_ != nullptr) {
        ++handle_->referenceCount;
    }
}

Registry::Registry(Registry&& other) noexcept { swap(other); }

Registry& Registry::operator=(Registry other) noexcept {
    swap(other);
    return *this;
}

Registry::~Registry() {
    if (handle_ != nullptr && --handle_->referenceCount == 0) {
        RegCloseKey(handle_->key);
        delete handle_;
    }
}

bool Registry::hasValue(const std::string& valueName) const {
    requireHandle(handle_);
    return RegQueryValueExW(handle_->key, stringToWstring(valueName).c_str(), nullptr, nullptr,
                            nullptr, nullptr) == ERROR_SUCCESS;
}

std::int32_t Registry::getIntValue(const std::string& valueName) const {
    requireHandle(handle_);
    DWORD type = 0;
    std::int32_t number = 0;  // a shorter value leaves the other bytes 0
    DWORD size = sizeof(number);
    const LSTATUS code = RegQueryValueExW(handle_->key, stringToWstring(valueName).c_str(), nullptr,
                                          &type, reinterpret_cast<BYTE*>(&number), &size);
    requireSuccess(code, kReadValue);
    requireDword(type);
    return number;
}

std::vector<char> Registry::getStringValue(const std::string& valueName) const {
    requireHandle(handle_);
    std::wstring text;
    const LSTATUS code = findText(handle_->key, stringToWstring(valueName), text);
    requireSuccess(code, kReadValue);
    const std::string narrow = wstringToString(text);
    return {narrow.begin(), narrow.end()};
}

void Registry::setStringValue(const std::string& valueName, const std::vector<char>& text) const {
    requireHandle(handle_);
    const DWORD size = textValueSize(text.size());
    const LSTATUS code =
        RegSetValueExW(handle_->key, stringToWstring(valueName).c_str(), 0, REG_SZ,
                       reinterpret_cast<const BYTE*>(paddedText(text).c_str()), size);
    requireSuccess(code, kWriteValue);
}

void Registry::setIntValue(const std::string& valueName, std::uint32_t number) const {
    requireHandle(handle_);
    const LSTATUS code =
        RegSetValueExW(handle_->key, stringToWstring(valueName).c_str(), 0, REG_DWORD,
                       reinterpret_cast<const BYTE*>(&number), sizeof(number));
    requireSuccess(code, kWriteValue);
}

void Registry::deleteValue(const std::string& valueName) const {
    requireHandle(handle_);
    const LSTATUS code = RegDeleteValueW(handle_->key, stringToWstring(valueName).c_str());
    requireSuccess(code, kDeleteValue);
}

void Registry::deleteSubKey(const std::string& path) const {
    requireHandle(handle_);
    const auto code = static_cast<LSTATUS>(  // not every platform header declares it as one
        SHDeleteKeyW(handle_->key, stringToWstring(path).c_str()));
    requireSuccess(code, kDeleteSubKey);
}

Registry Registry::openSubKey(const std::string& path) const {
    requireHandle(handle_);
    Registry subKey;
    const LSTATUS code = openBelow(RegOpenKeyW, path, subKey);
    requireSuccess(code, kOpenSubKey);
    return subKey;
}

Registry Registry::createSubKey(const std::string& path) const {
    requireHandle(handle_);
    Registry subKey;
    const LSTATUS code = openBelow(RegCreateKeyW, path, subKey);
    requireSuccess(code, kCreateSubKey);
    return subKey;
}

std::vector<Registry> Registry::getSubKeys() const {
    requireHandle(handle_);
    std::vector<Registry> subKeys;
    for (DWORD index = 0;; ++index) {
        std::wstring subKeyName;
        const LSTATUS code = readSubKeyName(handle_->key, index, subKeyName);
        if (code == ERROR_NO_MORE_ITEMS) {
            return subKeys;
        }
        requireSuccess(code, kGetSubKeys);
        subKeys.push_back(openSubKey(wstringToString(subKeyName)));
    }
}

// Binds the unbound `opened` to `path` below this key, if `open` succeeds.
LSTATUS Registry::openBelow(OpeningFunction open, const std::string& path, Registry& opened) const {
    opened.name = path;
    auto record = std::make_unique<SharedHandle>();
    const LSTATUS code = open(handle_->key, stringToWstring(path).c_str(), &record->key);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    if (record->key == handle_->key) {
        // For an empty path the platform returns this key's own handle and opens nothing. A second
        // record would close it twice.
        ++handle_->referenceCount;
        opened.handle_ = handle_;
    } else {
        opened.handle_ = record.release();
    }
    return code;
}

void Registry::swap(Registry& other) noexcept {
    std::swap(name, other.name);
    std::swap(handle_, other.handle_);
}

}  // namespace Quend::RegistryAccess
