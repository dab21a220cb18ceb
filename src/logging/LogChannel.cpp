#include "logging/LogChannel.h"

#include "logging/ProviderRegistry.h"

namespace Quend::Framework::Logging {

LogChannel::~LogChannel() {
    for (LogSink* const sink : sinks) {
        sink->release();
    }
}

void writeToSinks(const LogChannel& channel, std::uint32_t level, const char* text) {
    // NOLINTNEXTLINE(modernize-loop-convert): a sink may call back and attach more
    for (std::size_t i = 0; i < channel.sinks.size(); ++i) {
        channel.sinks[i]->write(level, text);
    }
}

void attachSinks(LogChannel& channel) {
    const ProviderRegistry providers = providerRegistry;  // a copy: a provider may register another
    channel.sinks.clear();
    // Room for all first, so that no sink is lost if memory runs out.
    channel.sinks.reserve(providers.size());
    for (LogSinkProvider* const provider : providers) {
        LogSink* const sink = provider->createSink(channel.name.c_str());
        if (sink != nullptr) {
            channel.sinks.push_back(sink);
        }
    }
    replayCache(channel);
}

}  // namespace Quend::Framework::Logging
