/// \file
// The services of the library that there is one of: the property store and the random source.
/// The namespace repeats its name on purpose: this is the framework's own part of the framework.
#pragma once

#include <Quend/Framework/Export.h>
#include <Quend/Framework/PropertyManager.h>

namespace Quend {
namespace Framework {
namespace Framework {

/// The one property store: never null, the same object for as long as the library is loaded,
/// made by the first call. Any thread may call, also for the first time. If making it throws
/// (std::bad_alloc), the next call tries again. The library destroys it at unload; neither the
/// store nor this function may be used after that.
QUEND_FRAMEWORK_API Management::PropertyManager* propertyManager();

/// A small pseudo-random number, 0 to 65535: the low 16 bits of the sum of the C runtime's
/// rand() and the number of calls made before, by any thread. Any thread may call; throws
/// std::system_error if the lock cannot be taken.
///
/// Not for secrets, nor for statistics: at load the source is seeded with the milliseconds of
/// the current second, so there are a thousand sequences to guess from. The C runtime keeps
/// rand()'s state for each thread, so only the thread that loaded the library draws from that
/// seed; every other one draws from the runtime's default seed, or from its own srand().
QUEND_FRAMEWORK_API unsigned short randomNumber();

}  // namespace Framework
}  // namespace Framework
}  // namespace Quend
