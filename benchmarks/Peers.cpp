// What other libraries need for the same: the same names and values, the same message with the
// same arguments, one sink that only counts and does so under a lock, no prefix formatted.
//
// What stays different: glog, POCO and spdlog stamp each message with the time and the thread
// before the sink sees it, and cannot be told not to. Boost.Log stamps nothing unless asked to.
#include <Poco/AutoPtr.h>
#include <Poco/Channel.h>
#include <Poco/LogStream.h>
#include <Poco/Logger.h>
#include <Poco/Mutex.h>
#include <Poco/Util/MapConfiguration.h>
#include <glog/logging.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>

#include <boost/interprocess/managed_shared_memory.hpp>
#include <boost/log/core.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sources/logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/make_shared.hpp>
#include <boost/property_tree/ptree.hpp>
#include <memory>
#include <mutex>

#include "Bench.h"

namespace bench {
namespace {

// The segment is shared memory with its default, recursive interprocess lock. One look-up only:
// it has nothing that counts references.
void addInterprocess() {
    namespace ipc = boost::interprocess;
    const auto& names = *new auto(shuffledNames(100));
    const char* const name = "quend-benchmark";
    ipc::shared_memory_object::remove(name);
    auto& segment = *new ipc::managed_shared_memory(ipc::create_only, name, 1U << 20U);
    ipc::shared_memory_object::remove(name);  // the mapping stays
    for (const std::string& each : names) {
        segment.construct<int>(each.c_str())(1);
    }
    addCase("register/Boost.Interprocess", [&segment, round = Round(names)]() mutable {
        return segment.find<int>(round.next().c_str()).first;
    });
}

// getString is the usual one, getRawString leaves out the expansion of ${variables}; both return
// a copy. get_child returns a reference, and takes the name for a path, of one element here.
void addConfigurations() {
    const auto& names = *new auto(shuffledNames(100));
    auto& configuration = *new Poco::AutoPtr(new Poco::Util::MapConfiguration);
    auto& wideNames = *new std::vector<std::wstring>;
    auto& tree = *new boost::property_tree::wptree;
    for (const std::string& name : names) {
        configuration->setString(name, "C:\\Program Files\\Kit\\Modules\\Shared");
        wideNames.emplace_back(name.begin(), name.end());
        tree.put(wideNames.back(), L"C:\\Program Files\\Kit\\Modules\\Shared");
    }
    addCase("readProperty/POCO", [&configuration, name = Round(names)]() mutable {
        return configuration->getString(name.next()).size();
    });
    addCase("readProperty/POCO raw", [&configuration, name = Round(names)]() mutable {
        return configuration->getRawString(name.next()).size();
    });
    addCase("readProperty/Boost", [&tree, name = Round(wideNames)]() mutable {
        return &tree.get_child(name.next()).data();
    });
}

class SpdlogSink final : public spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(const spdlog::details::log_msg& /*message*/) override { ++count; }
    void flush_() override {}
    unsigned long count = 0;
};

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

void addLoggers() {
    auto& spdlogLogger = *new spdlog::logger("bench", std::make_shared<SpdlogSink>());
    addCase("log/spdlog", [&spdlogLogger] { spdlogLogger.info("Reading all records"); });

    // Its ring keeps the newest, where the library's cache keeps the oldest.
    auto& backtrace = *new spdlog::logger("backtrace", std::make_shared<SpdlogSink>());
    backtrace.enable_backtrace(101);
    addCase("full cache/spdlog", [&backtrace] { backtrace.debug("Reading all records"); });

    auto& pocoLogger = Poco::Logger::create("bench", Poco::AutoPtr<PocoSink>(new PocoSink),
                                            Poco::Message::PRIO_INFORMATION);

    auto backend = boost::make_shared<BoostSink>();
    boost::log::core::get()->add_sink(
        boost::make_shared<boost::log::sinks::synchronous_sink<BoostSink>>(backend));
    auto& boostLogger = *new boost::log::sources::logger_mt;

    FLAGS_log_prefix = false;
    google::InitGoogleLogging("bench");
    auto& glogSink = *new GlogSink;

    for (const int threads : {1, 2, 8}) {
        const std::string group =
            threads == 1 ? "LogMessage/" : std::to_string(threads) + " threads/";
        addCase(
            group + "spdlog",
            [&spdlogLogger, i = 1000]() mutable {
                ++i;
                spdlogLogger.info("Read {} records of {}", i, i * 3);
            },
            threads);
        addCase(
            group + "POCO",
            [&pocoLogger, i = 1000]() mutable {
                ++i;
                thread_local Poco::LogStream stream(pocoLogger);  // not to be shared
                stream << "Read " << i << " records of " << i * 3 << std::endl;
            },
            threads);
        addCase(
            group + "Boost",
            [&boostLogger, i = 1000]() mutable {
                ++i;
                BOOST_LOG(boostLogger) << "Read " << i << " records of " << i * 3;
            },
            threads);
        addCase(
            group + "glog",
            [&glogSink, i = 1000]() mutable {
                ++i;
                LOG_TO_SINK_BUT_NOT_TO_LOGFILE(&glogSink, INFO)
                    << "Read " << i << " records of " << i * 3;
            },
            threads);
    }
}

}  // namespace

void addPeers() {
    addInterprocess();
    addConfigurations();
    addLoggers();
}

}  // namespace bench
