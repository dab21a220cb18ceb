#pragma once

#include <cstdint>
#include <ios>
#include <ostream>
#include <type_traits>
#include <utility>

#include "logging/LogChannel.h"
#include "logging/MessageText.h"

namespace Quend::Framework::Logging {

template <typename T>
constexpr bool isNumberOrEnum = std::is_arithmetic_v<T> || std::is_enum_v<T>;

/// Builds one message with stream insertion and logs it when it goes out of scope:
///
///     LogMessage(channel, 10) << "Read " << count << " records";
///
/// Threading: an object belongs to one thread; any number of them may be alive.
/// On failure: if memory runs out, that insertion and all later ones are lost, and nothing is
/// thrown. What was inserted before is logged.
class LogMessage {
 public:
    /// Level 0 logs nothing, whatever is inserted.
    LogMessage(ChannelHandle toChannel, std::uint32_t atLevel)
        : channel(toChannel), level(atLevel) {}

    /// Logs exactly the inserted text. An exception that log throws, a sink's included, ends the
    /// process: a destructor has no caller to pass it to. A component that must survive it calls
    /// log itself.
    ~LogMessage() noexcept;

    LogMessage(const LogMessage&) = delete;
    LogMessage& operator=(const LogMessage&) = delete;

    /// Inserts whatever a std::ostringstream takes, with the same text as the result.
    template <typename T>
    requires(!isNumberOrEnum<std::remove_cvref_t<T>>)
    LogMessage& operator<<(T&& value) {
        text.insert(std::forward<T>(value));
        return *this;
    }

    /// Numbers and enumerators are taken by value, as a stream takes them: a static constant
    /// without a definition has no address to refer to, nor has a bit-field.
    template <typename T>
    requires(isNumberOrEnum<T>)
    LogMessage& operator<<(T value) {
        text.insert(value);
        return *this;
    }

    /// Manipulators that are templates, as std::endl is: T above cannot be deduced from them.
    LogMessage& operator<<(std::ostream& (*manipulator)(std::ostream&)) {
        text.insert(manipulator);
        return *this;
    }
    LogMessage& operator<<(std::ios& (*manipulator)(std::ios&)) {
        text.insert(manipulator);
        return *this;
    }

 private:
    ChannelHandle channel;
    std::uint32_t level;
    MessageText text;
};

}  // namespace Quend::Framework::Logging
