#pragma once

#include <string>

namespace Quend::Framework::Logging {

/// Reads the environment variable "QUEND_OUTPUT_DEBUG_STRING", which says that messages should also
/// go to the debugger's output channel, into `setting`. Returns false if there is none or it cannot
/// be read; `setting` is unspecified then.
///
/// LogManager::log keeps the value of the first message. Nothing acts on it: the library has no
/// sink of its own, and a sink that wants the variable reads it itself.
/// Throws: std::bad_alloc.
bool readDebugString(std::wstring& setting);

}  // namespace Quend::Framework::Logging
