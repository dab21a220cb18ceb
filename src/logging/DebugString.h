/// \file
/// The environment variable "QUEND_OUTPUT_DEBUG_STRING": whether messages should also go to the
/// debugger's output channel. Read once and never used by the library; a sink may use it.
#pragma once

#include <string>

namespace Quend::Framework::Logging {

/// Stores the value in `setting` and returns true; returns false if there is none or it cannot be
/// read, and `setting` is unspecified then.
/// Throws: std::bad_alloc.
bool readDebugString(std::wstring& setting);

}  // namespace Quend::Framework::Logging
