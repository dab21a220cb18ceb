// Appends messages to a file, a line each, with date and time in UTC in front.
//
//     2024-05-06T12:05:09.123Z 10 Quend.Framework text
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "logging/LogSink.h"

class FileSink final : public Quend::Framework::Logging::LogSink {
 public:
    // Throws std::runtime_error if `path` cannot be opened: whoever asked for the channel learns
    // of it, and the channel is not created.
    FileSink(std::string channelName, const std::string& path)
        : channel(std::move(channelName)), file(path, std::ios::app) {
        if (!file) {
            throw std::runtime_error("cannot append to " + path);
        }
    }
    virtual ~FileSink() = default;

    void release() noexcept override { delete this; }

    // Flushed each time, since nothing is called any more if the process ends inside of a
    // message. A full disk loses messages and does not end the process; the next one tries again.
    void write(std::uint32_t level, const char* text) override {
        SYSTEMTIME now{};
        GetSystemTime(&now);
        std::array<char, 64> stamp{};
        std::snprintf(stamp.data(), stamp.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", now.wYear,
                      now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
        file << stamp.data() << ' ' << level << ' ' << channel << ' ' << text << '\n';
        file.flush();
        file.clear();
    }

 private:
    std::string channel;
    std::ofstream file;
};
