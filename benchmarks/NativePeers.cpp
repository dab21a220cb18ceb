// Libraries that Debian has for Linux only, doing the same work: the same names and values, the
// same message with the same arguments, one sink that only counts and does so under a lock, no
// prefix formatted. glog and POCO stamp each message with the time and the thread before the sink
// sees it, which cannot be turned off; Boost.Log stamps nothing unless asked to.
#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>
#include <Poco/LogStream.h>
#include <Poco/Logger.h>
#include <Poco/Mutex.h>
#include <Poco/Util/MapConfiguration.h>
#include <glog/logging.h>

#include <boost/log/core.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sources/logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/make_shared.hpp>
#include <memory>

#include "Bench.h"

namespace bench {
namespace {

// getString is the usual one, getRawString leaves out the expansion of ${variables}; both return
// a copy.
const Group configuration(Mode::table, {100}, [](std::size_t count) {
    const auto names = std::make_shared<std::vector<std::string>>(shuffledNames(count));
    Poco::AutoPtr made(new Poco::Util::MapConfiguration);
    for (const std::string& name : *names) {
        made->setString(name, "C:\\Program Files\\Kit\\Modules\\Shared");
    }
    addCase("readProperty/POCO", [names, made, name = Round(*names)]() mutable {
        return made->getString(name.next()).size();
    });
    addCase("readProperty/POCO raw", [names, made, name = Round(*names)]() mutable {
        return made->getRawString(name.next()).size();
    });
});

// Poco's own channels hold a lock while they write; so does this one.
class PocoSink final : public Poco::Channel {
    void log(const Poco::Message& /*message*/) override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        ++count;
    }
    Poco::FastMutex mutex;
    unsigned long count = 0;
};

class BoostSink final
    : public boost::log::sinks::basic_sink_backend<boost::log::sinks::synchronized_feeding> {
 public:
    void consume(const boost::log::record_view& /*record*/) { ++count; }

 private:
    unsigned long count = 0;
};

class GlogSink final : public google::LogSink {
    void send(google::LogSeverity /*severity*/, const char* /*fullName*/, const char* /*name*/,
              int /*line*/, const google::LogMessageTime& /*time*/, const char* /*message*/,
              std::size_t /*length*/) override {
        ++count;
    }
    unsigned long count = 0;
};

const Group loggers(Mode::table, {1}, [](std::size_t /*size*/) {
    auto& poco = Poco::Logger::create("bench", Poco::AutoPtr<PocoSink>(new PocoSink),
                                      Poco::Message::PRIO_INFORMATION);
    const auto stream = std::make_shared<Poco::LogStream>(poco);
    addCase("LogMessage/POCO", [stream, i = 1000]() mutable {
        ++i;
        *stream << "Read " << i << " records of " << i * 3 << std::endl;
    });

    boost::log::core::get()->add_sink(
        boost::make_shared<boost::log::sinks::synchronous_sink<BoostSink>>(
            boost::make_shared<BoostSink>()));
    const auto boostLogger = std::make_shared<boost::log::sources::logger_mt>();
    addCase("LogMessage/Boost.Log", [boostLogger, i = 1000]() mutable {
        ++i;
        BOOST_LOG(*boostLogger) << "Read " << i << " records of " << i * 3;
    });

    FLAGS_log_prefix = false;
    google::InitGoogleLogging("bench");
    const auto glogSink = std::make_shared<GlogSink>();
    addCase("LogMessage/glog", [glogSink, i = 1000]() mutable {
        ++i;
        LOG_TO_SINK_BUT_NOT_TO_LOGFILE(glogSink.get(), INFO)
            << "Read " << i << " records of " << i * 3;
    });
});

}  // namespace
}  // namespace bench
