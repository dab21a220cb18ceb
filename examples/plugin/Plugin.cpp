// A plug-in library for logging: each channel gets a line on the console and one in the file that
// the environment variable LOGFILE names.
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "ConsoleSink.h"
#include "FileSink.h"

namespace {

using namespace Quend::Framework::Logging;

// A provider has one sink for a channel, so this one is both. It holds them as any owner of a
// sink does and ends them with release().
class ConsoleAndFileSink final : public LogSink {
 public:
    ConsoleAndFileSink(const char* channel, const char* path)
        : console(new ConsoleSink(channel)), file(new FileSink(channel, path)) {}
    virtual ~ConsoleAndFileSink() = default;

    void release() noexcept override { delete this; }

    void write(std::uint32_t level, const char* text) override {
        console->write(level, text);
        file->write(level, text);
    }

 private:
    struct Release {
        void operator()(LogSink* sink) const noexcept { sink->release(); }
    };
    std::unique_ptr<LogSink, Release> console;
    std::unique_ptr<LogSink, Release> file;
};

std::string logFile() {
    std::size_t size = 0;  // with the terminator; 0 if the variable is not set
    getenv_s(&size, nullptr, 0, "LOGFILE");
    std::string path(size, '\0');
    const bool found = size > 0 && getenv_s(&size, path.data(), path.size(), "LOGFILE") == 0;
    return found ? path : "component.log";
}

class Provider final : public LogSinkProvider {
 public:
    LogSink* createSink(const char* channelName) override {
        return new ConsoleAndFileSink(channelName, logFile().c_str());
    }
};

}  // namespace

// Nothing may be thrown out of here: it would end the program. Null refuses to be loaded.
extern "C" __declspec(dllexport) LogSinkProvider* createLogSinkProvider() noexcept {
    return new (std::nothrow) Provider;
}
