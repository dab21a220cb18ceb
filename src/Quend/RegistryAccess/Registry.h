/// \file
// One open key of the Windows registry, as a small value: reads and writes numbers and texts,
/// deletes, and opens, creates and lists sub keys. Names and texts are narrow, in the process's
/// multibyte encoding; the conversions are those of "properties/TextConversion.h".
///
/// Threading: none of its own. An object and its copies belong to one thread at a time, since
/// the count they share is a plain integer.
///
/// Lifetime: copies share one open key, which is closed when the last of them goes. An object
/// made without arguments or moved from is unbound: it has no key and an empty name, and can be
/// copied, assigned and destroyed, nothing else.
///
/// Errors: what the platform refuses is thrown as one of the classes in "RegistryErrors.h", with
/// a fixed text per operation. Besides, std::bad_alloc, and std::length_error for a name or text
/// that is not valid in the encoding, before anything was asked of the platform. After any of
/// them no object has changed and no key stays open.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Quend::RegistryAccess {

class Registry {
 public:
    class GenericRegistryError;
    class NotFound;
    class OpenError;
    class NotInitialized;
    class CreationError;
    class AccessDenied;

    Registry() noexcept = default;  // unbound

    /// Opens `path` below `parent`. The name is the part of the path behind its last backslash:
    /// empty if the path ends in one, the whole path if it has none.
    /// For an empty path the platform gives back `parent` itself and opens nothing; the object
    /// then takes it over and closes it.
    Registry(HKEY parent, const std::string& path);

    Registry(const Registry& other);
    Registry(Registry&& other) noexcept;
    Registry& operator=(Registry other) noexcept;  // copies or moves; also onto itself
    ~Registry();

    const std::string& getName() const noexcept { return name; }

    /// Every function from here on first throws NotInitialized if the object is unbound. In each
    /// name, path and text to be written, what follows a NUL is ignored.

    /// Whether the platform answers a query for the value with success: a value that may not be
    /// read counts as absent, and the platform's refusal is never thrown.
    bool hasValue(const std::string& valueName) const;

    /// The bits of a REG_DWORD value. Only the result code for the end of an enumeration gives
    /// NotFound: a value that does not exist is an OpenError, as is one of more than four bytes
    /// or of another type.
    std::int32_t getIntValue(const std::string& valueName) const;

    /// The bytes of a value read as UTF-16 text up to its first NUL, of whatever type, without
    /// terminator: as many bytes as the text has code units, all NUL if one of them cannot be
    /// converted.
    /// The value is searched for by listing, and its name compared exactly: unlike everywhere
    /// else in the registry, one that differs in case is NotFound. A value of more than 261
    /// bytes, or a name too long for 261 units, ends the search with an OpenError when it is met
    /// before the one that was asked for.
    std::vector<char> getStringValue(const std::string& valueName) const;

    /// Writes a REG_SZ value of two bytes for each byte of `text`, which is shorter than 2 GB. A
    /// terminator is counted only if `text` ends with one. Where the converted text is shorter
    /// than that, because it holds a NUL or characters of several bytes, NULs follow.
    void setStringValue(const std::string& valueName, const std::vector<char>& text) const;

    void setIntValue(const std::string& valueName, std::uint32_t number) const;  // REG_DWORD

    /// Fails for a value that does not exist.
    void deleteValue(const std::string& valueName) const;

    /// Deletes the key with all its values and sub keys. Fails for a key that does not exist.
    void deleteSubKey(const std::string& path) const;

    /// A key below this one; createSubKey opens it if it exists. Unlike the constructor's, its
    /// name is the path exactly as given, backslashes and all.
    Registry openSubKey(const std::string& path) const;
    Registry createSubKey(const std::string& path) const;

    /// The direct sub keys, opened with openSubKey, in the platform's order. If one cannot be
    /// opened, that error is thrown instead. A name that cannot be converted opens as an empty
    /// path does: this key itself.
    std::vector<Registry> getSubKeys() const;

 private:
    /// Not a std::shared_ptr: that counts atomically, which one thread does not need, and is two
    /// pointers wide.
    struct SharedHandle {
        HKEY key = nullptr;
        std::uint32_t referenceCount = 1;
    };
    using OpeningFunction = LSTATUS(WINAPI*)(HKEY, const wchar_t*, HKEY*);

    LSTATUS openBelow(OpeningFunction open, const std::string& path, Registry& opened) const;
    void swap(Registry& other) noexcept;

    std::string name;
    SharedHandle* handle_ = nullptr;  // null: unbound
};

}  // namespace Quend::RegistryAccess
