/// \file
// What stands behind randomNumber(), whose contract is in <Quend/Framework/Framework.h>.
#pragma once

#include <cstdint>
#include <mutex>

namespace Quend::Framework::Framework {

/// The calls of randomNumber made so far, modulo 2^32. Guarded by randomMutex, as is rand().
extern std::uint32_t randomCallCounter;
extern std::mutex randomMutex;

/// Seeds rand() for the calling thread with the milliseconds of the current second, 0 to 999,
/// and nothing else: there are exactly a thousand seeds.
void seedRandomSource();

}  // namespace Quend::Framework::Framework
