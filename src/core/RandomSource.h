/// \file
/// The state behind randomNumber(), whose contract is in <Quend/Framework/Framework.h>.
#pragma once

#include <cstdint>
#include <mutex>

namespace Quend::Framework::Framework {

/// The number of randomNumber calls so far, modulo 2^32. Guarded by randomMutex, as is rand().
extern std::uint32_t randomCallCounter;
extern std::mutex randomMutex;

/// Seeds rand() for the calling thread with the milliseconds of the current second. There are
/// exactly a thousand seeds, by design.
void seedRandomSource();

}  // namespace Quend::Framework::Framework
