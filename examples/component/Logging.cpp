#include <cstdlib>
#include <fstream>
#include <iostream>

#include "Steps.h"
#include "logging/LogManager.h"
#include "logging/LogMessage.h"

namespace {

namespace Logging = Quend::Framework::Logging;
using Logging::LogMessage;

// A translation unit that logs names the library's channel and its level once.
const std::string kChannelName = "Quend.Framework";
constexpr std::uint32_t kLevel = 10;

// What a component looks like: it asks for its channel when it is created, and keeps the handle.
class Counter {
 public:
    Counter() : channel(Logging::getChannel(kChannelName.c_str())) {}

    void countTo(int end) const {
        for (int i = 1; i <= end; ++i) {
            LogMessage(channel, kLevel) << "counted to " << i << " of " << end;
        }
    }

    std::size_t cached() const { return channel->channel->cache.size(); }

 private:
    Logging::ChannelHandle channel;
};

}  // namespace

int showLogging(const Arguments& arguments) {
    const std::string path = arguments.empty() ? "component.log" : arguments[0];
    _putenv_s("LOGFILE", path.c_str());

    std::cout << "Without a plug-in there is no sink, and messages stay in the cache:\n";
    const Counter early;
    early.countTo(3);
    std::cout << early.cached() << " messages cached\n";
    early.countTo(200);
    std::cout << early.cached() << " after 200 more: 101 messages and the marker\n";

    std::cout << "A plug-in that is loaded now serves new channels only. This one never gets a "
                 "sink, and\n"
                 "what it has cached is lost when logging shuts down.\n";
    Logging::loadPluginLibrary(L"SinkPlugin.dll");
    early.countTo(1);

    std::cout << "Once more from the beginning, the plug-in first, as a program should:\n";
    Logging::logManager.shutdownLogging();
    Logging::loadPluginLibrary(L"SinkPlugin.dll");
    const Counter late;
    late.countTo(3);
    std::cout << late.cached() << " messages cached\n";

    std::cout << path << " now holds:\n" << std::ifstream(path).rdbuf();
    return 0;
}
