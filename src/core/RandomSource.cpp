#include "core/RandomSource.h"

#include <Quend/Framework/Framework.h>

#include <sys/timeb.h>

#include <cstdlib>

namespace Quend::Framework::Framework {

void seedRandomSource() {
    __timeb64 now{};
    _ftime64_s(&now);
    std::srand(now.millitm);
}

unsigned short randomNumber() {
    const std::lock_guard lock(randomMutex);
    const std::uint32_t sum = static_cast<std::uint32_t>(std::rand()) + randomCallCounter++;
    return static_cast<unsigned short>(sum);
}

}  // namespace Quend::Framework::Framework
