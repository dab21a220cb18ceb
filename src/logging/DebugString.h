/// \file
// The wish, by environment variable, that messages also go to the debugger's output channel.
/// The library takes it down once and acts on it nowhere; a sink may.
#pragma once

#include <string>

namespace Quend::Framework::Logging {

/// Puts the value of "QUEND_OUTPUT_DEBUG_STRING" into `setting` and returns true. Returns false
/// if there is none or it cannot be read; `setting` is then of no meaning.
/// Throws std::bad_alloc alone.
bool readDebugString(std::wstring& setting);

}  // namespace Quend::Framework::Logging
