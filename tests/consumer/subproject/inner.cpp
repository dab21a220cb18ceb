// A program of the parent that uses what is inside the library: it logs.
#include <cstdio>

#include "logging/LogManager.h"
#include "logging/LogMessage.h"

int main() {
    const auto channel = Quend::Framework::Logging::getChannel("Parent");
    Quend::Framework::Logging::LogMessage(channel, 10) << "hello";
    std::printf("Messages that wait for a sink: %d\n",
                static_cast<int>(channel->channel->cache.size()));
}
