// Invariants: a record exists exactly while at least one Registry points to it, and its count is
// their number. Everything that may throw comes before the platform opens a key, so that an open
// key always has its owner.
//
// A UTF-16 copy lives no longer than the statement with the platform's call: it is gone before
// an error is raised.
#include "Quend/RegistryAccess/Registry.h"

#include <shlwapi.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "Quend/RegistryAccess/RegistryErrors.h"
#include "properties/TextConversion.h"

namespace Quend::RegistryAccess {
namespace {

using Framework::Text::stringToWstring;
using Framework::Text::wstringToString;

// What becomes of a result code. Three are told apart, success included; the code itself is
// not kept. Callers and their users know the texts: they stay as they are.
struct Failure {
    void (*raise)(const char* message, std::int32_t line);
    const char* message;
};
struct Failures {
    Failure onAccessDenied;  // 5, ERROR_ACCESS_DENIED
    Failure onNoMoreItems;   // 259, ERROR_NO_MORE_ITEMS
    Failure onOthers;        // any other but 0
};

template <typename Error>
void raiseError(const char* message, std::int32_t line) {
    throw Error(message, line);
}
void raiseCreationError(const char* /*message*/, std::int32_t /*line*/) {
    throw Registry::CreationError();
}
constexpr const char* kCreationError = "Unable to create requested key.";

constexpr auto accessDenied = raiseError<Registry::AccessDenied>;
constexpr auto notFound = raiseError<Registry::NotFound>;
constexpr auto openError = raiseError<Registry::OpenError>;
constexpr auto creationError = raiseCreationError;

// The constructor's text has no full stop where that of openSubKey has one.
// Where a value is read or written, NotFound is for 259 alone, although the platform's own code
// for a value that does not exist is another, 2. It can be had from a listing only.
constexpr Failures kConstructor = {
    {accessDenied, "Unable to open requested key"},
    {openError, "Unable to open requested key"},
    {openError, "Unable to open requested key"},
};
constexpr Failures kReadValue = {
    // getIntValue, and getStringValue for each value it meets
    {accessDenied, "Not enough permissions to read value."},
    {notFound, "The requested value was not found."},
    {openError, "Unable to open requested value."},
};
constexpr Failures kWriteValue = {
    // setStringValue, setIntValue
    {accessDenied, "Not enough permissions to modify value."},
    {notFound, "The value to update was not found."},
    {openError, "Unable to open requested value."},
};
constexpr Failures kDeleteValue = {
    {accessDenied, "Not enough permissions to delete value."},
    {notFound, "Unable to delete given value."},
    {notFound, "Unable to delete given value."},
};
constexpr Failures kDeleteSubKey = {
    {accessDenied, "Not enough permissions to delete sub key."},
    {notFound, "Unable to delete given key."},
    {notFound, "Unable to delete given key."},
};
constexpr Failures kOpenSubKey = {
    {accessDenied, "Not enough permissions to read requested key."},
    {openError, "Unable to open requested key."},
    {openError, "Unable to open requested key."},
};
constexpr Failures kCreateSubKey = {
    {accessDenied, "Not enough permissions to create requested key."},
    {creationError, kCreationError},
    {creationError, kCreationError},
};
constexpr Failures kGetSubKeys = {
    {accessDenied, "Not enough permissions to read sub key enumeration."},
    {nullptr, nullptr},  // ends the list, which is no failure
    {openError, "Unable to open enumerated sub key."},
};

void raiseFailure(LSTATUS code, const Failures& failures, std::int32_t line) {
    const auto& failure = code == ERROR_ACCESS_DENIED   ? failures.onAccessDenied
                          : code == ERROR_NO_MORE_ITEMS ? failures.onNoMoreItems
                                                        : failures.onOthers;
    if (code != ERROR_SUCCESS) {
        failure.raise(failure.message, line);
    }
}

// One limit for every listing, in units for names and in bytes for data.
constexpr DWORD kListingLimit = 261;

// Lists the values up to the one named `valueName` and stores its text in `text`; returns the
// first result code that is not success, or success.
LSTATUS findText(HKEY key, std::wstring_view valueName, std::wstring& text) {
    for (DWORD index = 0;; ++index) {
        std::array<wchar_t, kListingLimit> name{};
        DWORD nameLength = kListingLimit;
        // Longer than the platform is told, so that data of any length, odd ones included, ends
        // with a NUL unit; fresh for each value, so that nothing of a longer one is left.
        std::array<wchar_t, kListingLimit / sizeof(wchar_t) + 2> data{};
        DWORD dataLength = kListingLimit;
        DWORD type = 0;
        const LSTATUS code = RegEnumValueW(key, index, name.data(), &nameLength, nullptr, &type,
                                           reinterpret_cast<BYTE*>(data.data()), &dataLength);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        if (std::wstring_view(name.data(), nameLength) == valueName) {
            text = data.data();
            return ERROR_SUCCESS;
        }
    }
}

// Lists one sub key; `subKeyName` is what precedes the first NUL.
LSTATUS readSubKeyName(HKEY key, DWORD index, std::wstring& subKeyName) {
    std::array<wchar_t, kListingLimit + 1> buffer{};  // ends with a NUL even when filled
    const LSTATUS code = RegEnumKeyW(key, index, buffer.data(), kListingLimit);
    subKeyName = buffer.data();
    return code;
}

// The text to write: as many code units as `text` has bytes.
std::wstring paddedText(const std::vector<char>& text) {
    std::wstring padded = stringToWstring(std::string(text.begin(), text.end()));
    padded.resize(text.size(), L'\0');
    return padded;
}

}  // namespace

Registry::CreationError::CreationError() : GenericRegistryError(kCreationError, __LINE__) {}

Registry::Registry(HKEY parent, const std::string& path)
    : name(path.substr(path.rfind('\\') + 1)) {  // no backslash: npos + 1 is 0
    auto opened = std::make_unique<SharedHandle>();
    const LSTATUS code = RegOpenKeyW(parent, stringToWstring(path).c_str(), &opened->key);
    raiseFailure(code, kConstructor, __LINE__);
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
    requireHandle(__LINE__);
    return RegQueryValueExW(handle_->key, stringToWstring(valueName).c_str(), nullptr, nullptr,
                            nullptr, nullptr) == ERROR_SUCCESS;
}

std::int32_t Registry::getIntValue(const std::string& valueName) const {
    requireHandle(__LINE__);
    DWORD type = 0;
    std::int32_t number = 0;  // a value of fewer bytes leaves the others 0
    DWORD size = sizeof(number);
    const LSTATUS code = RegQueryValueExW(handle_->key, stringToWstring(valueName).c_str(), nullptr,
                                          &type, reinterpret_cast<BYTE*>(&number), &size);
    raiseFailure(code, kReadValue, __LINE__);
    if (type != REG_DWORD) {
        throw OpenError(
            "type == REG_DWORD: Only REG_DWORD value types are supported in getIntValue function.",
            __LINE__);
    }
    return number;
}

std::vector<char> Registry::getStringValue(const std::string& valueName) const {
    requireHandle(__LINE__);
    std::wstring text;
    const LSTATUS code = findText(handle_->key, stringToWstring(valueName), text);
    raiseFailure(code, kReadValue, __LINE__);
    const std::string narrow = wstringToString(text);
    return {narrow.begin(), narrow.end()};
}

void Registry::setStringValue(const std::string& valueName, const std::vector<char>& text) const {
    requireHandle(__LINE__);
    const LSTATUS code = RegSetValueExW(handle_->key, stringToWstring(valueName).c_str(), 0, REG_SZ,
                                        reinterpret_cast<const BYTE*>(paddedText(text).c_str()),
                                        static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    raiseFailure(code, kWriteValue, __LINE__);
}

void Registry::setIntValue(const std::string& valueName, std::uint32_t number) const {
    requireHandle(__LINE__);
    const LSTATUS code =
        RegSetValueExW(handle_->key, stringToWstring(valueName).c_str(), 0, REG_DWORD,
                       reinterpret_cast<const BYTE*>(&number), sizeof(number));
    raiseFailure(code, kWriteValue, __LINE__);
}

void Registry::deleteValue(const std::string& valueName) const {
    requireHandle(__LINE__);
    const LSTATUS code = RegDeleteValueW(handle_->key, stringToWstring(valueName).c_str());
    raiseFailure(code, kDeleteValue, __LINE__);
}

void Registry::deleteSubKey(const std::string& path) const {
    requireHandle(__LINE__);
    const auto code = static_cast<LSTATUS>(  // not every platform header declares it as one
        SHDeleteKeyW(handle_->key, stringToWstring(path).c_str()));
    raiseFailure(code, kDeleteSubKey, __LINE__);
}

Registry Registry::openSubKey(const std::string& path) const {
    requireHandle(__LINE__);
    Registry subKey;
    const LSTATUS code = openBelow(RegOpenKeyW, path, subKey);
    raiseFailure(code, kOpenSubKey, __LINE__);
    return subKey;
}

Registry Registry::createSubKey(const std::string& path) const {
    requireHandle(__LINE__);
    Registry subKey;
    const LSTATUS code = openBelow(RegCreateKeyW, path, subKey);
    raiseFailure(code, kCreateSubKey, __LINE__);
    return subKey;
}

std::vector<Registry> Registry::getSubKeys() const {
    requireHandle(__LINE__);
    std::vector<Registry> subKeys;
    for (DWORD index = 0;; ++index) {
        std::wstring subKeyName;
        const LSTATUS code = readSubKeyName(handle_->key, index, subKeyName);
        if (code == ERROR_NO_MORE_ITEMS) {
            return subKeys;
        }
        raiseFailure(code, kGetSubKeys, __LINE__);
        const Registry subKey = openSubKey(wstringToString(subKeyName));
        subKeys.push_back(subKey);
    }
}

void Registry::requireHandle(std::int32_t line) const {
    if (handle_ == nullptr) {
        throw NotInitialized("handle_ != 0: Invalid handle state.", line);
    }
}

// Binds `opened`, which is unbound, to `path` below this key, if `open` succeeds.
LSTATUS Registry::openBelow(OpeningFunction open, const std::string& path, Registry& opened) const {
    opened.name = path;
    auto record = std::make_unique<SharedHandle>();
    const LSTATUS code = open(handle_->key, stringToWstring(path).c_str(), &record->key);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    if (record->key == handle_->key) {
        // For an empty path the platform gives back the handle it was passed, without opening
        // anything. It is to be closed once, so there must be no second record of it.
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
