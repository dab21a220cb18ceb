/// \file
// Between the two forms of text: narrow (bytes in the process's multibyte encoding, the C
/// locale's LC_CTYPE) and wide (UTF-16 code units).
///
/// Each function has its own rule for the size of its result. Callers depend on the rules as they
/// stand and they differ on purpose: the three are not to be unified.
///
/// Reentrant and without state. The library never sets the locale; a host that changes it while
/// another thread converts has to see to that itself. All of them throw std::bad_alloc.
#pragma once

#include <string>

namespace Quend::Framework::Text {

/// The result counts its terminating NUL: size() is one more than the number of text bytes, since
/// callers pass it on as a C string. If any code unit cannot be converted, it is empty.
std::string wideToNarrow(const wchar_t* text);

/// The result has as many bytes as `text` has code units, whatever the conversion gives, so that
/// a caller knows the size beforehand. Bytes in excess are cut off; what is missing is NUL: after
/// a NUL inside `text`, and all of it when a code unit cannot be converted.
std::string wstringToString(const std::wstring& text);

/// The result has the converted code units and nothing else. Bytes after a NUL inside `text` are
/// ignored. Throws std::length_error, "string too long", if the bytes are not valid text.
std::wstring stringToWstring(const std::string& text);

}  // namespace Quend::Framework::Text
