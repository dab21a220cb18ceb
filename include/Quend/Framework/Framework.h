#pragma once

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Export.h>
#include <Quend/Framework/PropertyManager.h>

namespace Quend {
namespace Framework {

/// The process-wide services: the property store and the random source.
///
/// Its name is repeated on purpose: it is the framework's own part of the framework.
/// Threading: any thread may call any function at any time.
namespace Framework {

/// Returns the one property store, which the first call creates; never null, always the same.
/// Throws: std::bad_alloc if the store cannot be created; the next call tries again.
/// Ownership: the library destroys the store at unload. Do not use it, nor call this, after that.
QUEND_FRAMEWORK_API Management::PropertyManager* propertyManager();

/// Returns a small pseudo-random number, 0 to 65535.
///
/// It is the low 16 bits of the C runtime's rand() plus the number of earlier calls by any thread.
/// At load the library seeds rand() with the milliseconds of the current second, so there are only
/// a thousand sequences: do not use it for secrets or statistics. The runtime keeps the state of
/// rand() per thread: only the thread that loaded the library draws from that seed, and a seed of
/// its own from before is lost; others draw from the runtime's default seed or their own srand().
/// Throws: std::system_error if the lock cannot be taken.
QUEND_FRAMEWORK_API unsigned short randomNumber();

}  // namespace Framework
}  // namespace Framework
}  // namespace Quend
