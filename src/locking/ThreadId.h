/// \file
/// The id of the calling thread, asked for at every lock.
///
/// Where std::this_thread::get_id() looks a record of the thread up, it takes longer than the lock
/// itself; the platform's own call is one read. ThreadId() is the id of no thread.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include <thread>
#endif

namespace Quend::Framework {

#ifdef _WIN32
using ThreadId = DWORD;
inline ThreadId currentThreadId() { return GetCurrentThreadId(); }
#else
using ThreadId = std::thread::id;
inline ThreadId currentThreadId() { return std::this_thread::get_id(); }
#endif

}  // namespace Quend::Framework
