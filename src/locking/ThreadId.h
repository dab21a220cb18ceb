#pragma once

#include <windows.h>

namespace Quend::Framework {

/// The id of a thread, asked for at every lock; ThreadId() is the id of no thread.
///
/// Not std::thread::id: where std::this_thread::get_id() looks a record of the thread up, it takes
/// longer than the lock itself, and the platform's own call is one read.
using ThreadId = DWORD;

inline ThreadId currentThreadId() { return GetCurrentThreadId(); }

}  // namespace Quend::Framework
