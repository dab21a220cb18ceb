#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Quend::RegistryAccess {

/// Returns the size in bytes of a REG_SZ value made from `length` narrow bytes: two for each.
/// Throws: std::length_error from 2 GB on, which the platform's 32-bit size cannot hold.
std::uint32_t textValueSize(std::size_t length);

/// One open key of the Windows registry, as a small value: reads and writes numbers and texts,
/// deletes, and opens, creates and lists sub keys.
///
/// Names, paths and texts are narrow, in the process's multibyte encoding, and are converted with
/// "properties/TextConversion.h"; whatever follows a NUL is ignored. Copies share one open key,
/// which is closed with the last of them. An object made without arguments or moved from is
/// unbound: it has no key, and its name is empty. It can be copied, moved, assigned and destroyed,
/// and getName works; everything else throws.
///
/// Throws: what the platform refuses, as a class of "RegistryErrors.h" with a fixed text for each
/// operation; NotInitialized if the object is unbound. Outside that family, std::length_error if a
/// name, path or text is not valid in the encoding, before any platform call; std::bad_alloc.
/// Threading: none. An object and its copies belong to one thread at a time, since the count they
/// share is a plain integer.
/// On failure: no object has changed and no key is left open.
class Registry {
 public:
    class GenericRegistryError;
    class NotFound;
    class OpenError;
    class NotInitialized;
    class CreationError;
    class AccessDenied;

    /// Makes an unbound object.
    Registry() noexcept = default;

    /// Opens `path` below `parent`. The name is the part of `path` behind its last backslash. That
    /// is the last byte 5C, which in a double-byte encoding may be the second half of a character.
    /// Ownership: for an empty path the platform returns `parent` itself, and this object closes
    /// it.
    Registry(HKEY parent, const std::string& path);

    /// Shares the key of `other`.
    Registry(const Registry& other);

    /// Takes over the key of `other`, which is unbound afterwards.
    Registry(Registry&& other) noexcept;

    /// Copies or moves, also onto itself.
    Registry& operator=(Registry other) noexcept;

    ~Registry();

    /// Returns the name given when the key was opened; see the constructor and openSubKey. That of
    /// an unbound object is empty.
    const std::string& getName() const noexcept { return name; }

    /// Returns whether a query for the value succeeds; one that may not be read counts as absent.
    bool hasValue(const std::string& valueName) const;

    /// Returns the bits of a REG_DWORD value.
    /// Throws: OpenError if the value does not exist, has another type or more than four bytes.
    std::int32_t getIntValue(const std::string& valueName) const;

    /// Returns the text of a value of any type, read as UTF-16 up to its first NUL: as many bytes
    /// as it has code units, all of them NUL if the encoding cannot represent one. Outside the C
    /// locale, Microsoft's runtime may instead convert it to a look-alike: a capital omega becomes
    /// O in code page 1252.
    ///
    /// The values are listed until one has exactly this name: case matters here, unlike everywhere
    /// else in the registry.
    /// Throws: NotFound if no name matches; OpenError if a value of more than 261 bytes or with a
    /// name of more than 260 units comes first or is the one wanted, so a text of more than 130
    /// units cannot be read.
    std::vector<char> getStringValue(const std::string& valueName) const;

    /// Writes a REG_SZ value of two bytes for each byte of `text`. A terminator is counted only if
    /// `text` ends with one; the platform may add one. If the converted text is shorter, because
    /// `text` holds a NUL or characters of several bytes, NULs fill the rest.
    /// getStringValue reads at most 129 bytes back, or 130 with a terminator.
    /// Throws: std::length_error if `text` has 2 GB or more, before any platform call.
    void setStringValue(const std::string& valueName, const std::vector<char>& text) const;

    /// Writes a REG_DWORD value.
    void setIntValue(const std::string& valueName, std::uint32_t number) const;

    /// Deletes the value.
    /// Throws: NotFound if it does not exist.
    void deleteValue(const std::string& valueName) const;

    /// Deletes the key `path` below this one with all its values and sub keys.
    /// An empty path, or one that begins with a NUL, deletes everything in this very key and
    /// reports success: check a name from getSubKeys before deleting with it.
    /// Throws: NotFound if the key does not exist.
    void deleteSubKey(const std::string& path) const;

    /// Opens the key `path` below this one. Unlike the constructor's, its name is all of `path`.
    /// An empty path gives another object that shares this key.
    Registry openSubKey(const std::string& path) const;

    /// Like openSubKey, but creates the key if it does not exist.
    Registry createSubKey(const std::string& path) const;

    /// Opens the direct sub keys with openSubKey, in the platform's order.
    /// A sub key whose name the encoding cannot show appears as this very key, with a name of NULs:
    /// do not descend into it. Outside the C locale the runtime may also convert a character to a
    /// look-alike, and so open another sub key of that name. A name is cut off after as many bytes
    /// as it has code units, so one with multi-byte characters opens another sub key or none.
    /// Throws: the error of the first sub key that cannot be opened; std::length_error, outside the
    /// family of errors, if a name is cut off in the middle of a character.
    std::vector<Registry> getSubKeys() const;

 private:
    /// Not a std::shared_ptr, which counts atomically and is two pointers wide.
    struct SharedHandle {
        HKEY key = nullptr;
        std::uint32_t referenceCount = 1;
    };
    using OpeningFunction = LSTATUS(WINAPI*)(HKEY, const wchar_t*, HKEY*);

    LSTATUS openBelow(OpeningFunction open, const std::string& path, Registry& opened) const;
    void swap(Registry& other) noexcept;

    std::string name;
    // Null: unbound. The text of NotInitialized names it.
    SharedHandle* handle_ = nullptr;
};

}  // namespace Quend::RegistryAccess
