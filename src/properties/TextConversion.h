/// \file
/// Conversions between narrow text (bytes in the multibyte encoding of the C locale's LC_CTYPE) and
/// wide text (UTF-16 code units).
///
/// Each has its own rule for the size of its result. Callers depend on the rules as they are, so
/// the three must not be unified. The library never sets the locale.
///
/// Which characters an encoding has is the C runtime's to say. Some runtimes convert one that it
/// lacks to one that looks alike, and others report it; only the latter cannot be converted here.
///
/// Throws: std::bad_alloc.
/// Threading: reentrant; the locale must not change while another thread converts.
#pragma once

#include <string>

namespace Quend::Framework::Text {

/// Converts up to the first NUL. The result's size counts one terminating NUL, since callers pass
/// it on as a C string; it is empty if any code unit cannot be converted.
std::string wideToNarrow(const wchar_t* text);

/// Converts to exactly as many bytes as `text` has code units. Excess bytes are cut off; missing
/// ones are NUL: those after a NUL in `text`, and all if any code unit cannot be converted.
std::string wstringToString(const std::wstring& text);

/// Converts up to the first NUL; the result has the converted code units and nothing else.
/// Throws: std::length_error, "string too long", if the bytes are not valid text.
std::wstring stringToWstring(const std::string& text);

}  // namespace Quend::Framework::Text
