#include "logging/LogMessage.h"

#include "logging/LogManager.h"

namespace Quend::Framework::Logging {

LogMessage::~LogMessage() noexcept {
    if (level != 0) {
        log(channel, level, text.finish());
    }
}

}  // namespace Quend::Framework::Logging
