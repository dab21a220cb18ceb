/// \file
// Builds one message with stream insertion and logs it when it goes out of scope:
///
///     LogMessage(channel, 10) << "Read " << count << " records";
///
/// Threading: an object belongs to one thread; any number of them may be alive.
#pragma once

#include <cstdint>
#include <ostream>

#include "logging/LogChannel.h"
#include "logging/MessageText.h"

namespace Quend::Framework::Logging {

class LogMessage {
 public:
    /// Level 0 logs nothing, whatever is inserted.
    LogMessage(ChannelHandle toChannel, std::uint32_t atLevel)
        : channel(toChannel), level(atLevel) {}

    /// Logs exactly the inserted text. What log throws, a sink's exception included, ends the
    /// process: a destructor has nobody to report to, and a component that must survive it calls
    /// log itself.
    ~LogMessage() noexcept;

    LogMessage(const LogMessage&) = delete;
    LogMessage& operator=(const LogMessage&) = delete;

    template <typename T>
    LogMessage& operator<<(const T& value) {
        text.insert(value);
        return *this;
    }

    /// std::endl and its like are templates, which the operator above cannot deduce.
    LogMessage& operator<<(std::ostream& (*manipulator)(std::ostream&)) {
        text.insert(manipulator);
        return *this;
    }

 private:
    ChannelHandle channel;
    std::uint32_t level;
    MessageText text;
};

}  // namespace Quend::Framework::Logging
