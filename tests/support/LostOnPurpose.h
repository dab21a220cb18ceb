#pragma once

#ifdef QUEND_FIND_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

namespace tests {

// While one lives, the leak check overlooks what this thread allocates: the contract of the object
// registry states which entries and objects are lost.
#ifdef QUEND_FIND_LEAKS
using LostOnPurpose = __lsan::ScopedDisabler;
#else
struct LostOnPurpose {};
#endif

}  // namespace tests
