// Prints messages on the standard output, with the local time of day in front.
//
//     14:05:09.123 [10] Quend.Framework: text
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

#include "logging/LogSink.h"

class ConsoleSink final : public Quend::Framework::Logging::LogSink {
 public:
    explicit ConsoleSink(std::string channelName) : channel(std::move(channelName)) {}
    virtual ~ConsoleSink() = default;

    void release() noexcept override { delete this; }

    // One call of printf, so that a line stays whole beside what the program prints itself. A
    // console that fails is ignored: a message is not worth the process.
    void write(std::uint32_t level, const char* text) override {
        SYSTEMTIME now{};
        GetLocalTime(&now);
        std::printf("%02d:%02d:%02d.%03d [%u] %s: %s\n", now.wHour, now.wMinute, now.wSecond,
                    now.wMilliseconds, level, channel.c_str(), text);
        std::fflush(stdout);
    }

 private:
    std::string channel;
};
