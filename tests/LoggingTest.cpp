#include "locking/RecursiveMutex.h"
#include "logging/LogManager.h"
#include "logging/LogMessage.h"
#include "logging/ProviderRegistry.h"
#include "models/Logging.h"
#include "support/Allocations.h"
#include "support/Complaint.h"
#include "support/Test.h"

namespace {

using namespace tests;

struct Logging : testing::Test {
    Logging() {
        events.clear();
        events.reserve(10'000);
        ProviderRegistry().swap(providerRegistry);  // which keeps its room
    }
    void addProvider(std::string tag, Callback write = {}, Callback create = {}) {
        manager.registerSinkProvider(
            std::make_unique<TestProvider>(std::move(tag), std::move(write), std::move(create)));
    }

    LogManager manager;
};

TEST_F(Logging, MessagesGoToTheSinksOfTheirChannel) {
    // A channel without a sink keeps its messages.
    ChannelHandle early = manager.getChannel("early");
    manager.log(early, 10, "nobody listens");
    EXPECT_EQ(takeEvents(), "");
    EXPECT_EQ(early->channel->cache.front().text, "nobody listens");
    // A provider brings a sink to each channel that is created from now on.
    addProvider("file ");
    ChannelHandle network = manager.getChannel("network");
    EXPECT_EQ(manager.getChannel("network"), network);
    manager.log(network, 10, " connected");
    LogMessage(network, 20) << " after " << 3 << " attempts";
    EXPECT_EQ(takeEvents(), "file network:10 connected file network:20 after 3 attempts ");
    // The early channel stays as it is.
    manager.log(early, 10, "still nobody");
    EXPECT_EQ(early->channel->cache.size(), 2U);
    // In the end the provider is deleted, and the sink released.
    manager.shutdownLogging();
    EXPECT_EQ(takeEvents(), "~file  -file network ");
}

TEST_F(Logging, ChannelWithoutASinkKeepsItsFirst101MessagesAndAMarker) {
    ChannelHandle early = manager.getChannel("early");
    for (int number = 1; number <= 200; ++number) {
        manager.log(early, 10, std::to_string(number).c_str());
    }
    const std::vector<CachedLogRecord>& cache = early->channel->cache;
    ASSERT_EQ(cache.size(), 102U);
    EXPECT_EQ(cache[0].text, "1");
    EXPECT_EQ(cache[100].text, "101");
    EXPECT_EQ(cache[101].text, "LOG Cache overflow...");
    EXPECT_EQ(cache[101].level, 40U);
}

TEST_F(Logging, ShutdownLeavesProvidersOfOthersRegistered) {
    TestProvider notOwned("other");
    providerRegistry.push_back(&notOwned);
    addProvider("own");
    manager.shutdownLogging();
    EXPECT_EQ(takeEvents(), "~own ");
    EXPECT_EQ(providerRegistry, ProviderRegistry{&notOwned});
    providerRegistry.clear();
}

TEST_F(Logging, MatchesModelOverRandomOperations) { runOnRandomInputs(&checkLogging); }

TEST_F(Logging, SinkMayLogIntoTheCacheThatIsReplayed) {
    ChannelHandle network = manager.getChannel("network");
    manager.log(network, 7, " lost");
    std::string expected = "file network:7 lost ";
    constexpr int kEchoes = 40;  // so many that the records move
    for (int i = 0; i < kEchoes; ++i) {
        expected += "file network:0 echo ";
    }
    int echoes = 0;
    addProvider("file ", [&](const std::string&) {
        if (echoes < kEchoes) {
            ++echoes;
            manager.log(network, 0, " echo");  // of level 0, so it is cached
        }
    });
    attachSinks(*network->channel);
    EXPECT_EQ(takeEvents(), expected);
    EXPECT_TRUE(network->channel->cache.empty());
}

TEST_F(Logging, SinkMayLogIntoItsOwnChannelAndIntoOthers) {
    addProvider("file ", [&](const std::string& text) {
        if (text == " full") {
            manager.log(manager.getChannel("disk"), 10, " retry");
            manager.log(manager.getChannel("alarm"), 50, " call");
        }
    });
    addProvider("mail ");
    manager.log(manager.getChannel("disk"), 40, " full");
    EXPECT_EQ(takeEvents(),
              "file disk:40 full file disk:10 retry mail disk:10 retry "
              "file alarm:50 call mail alarm:50 call mail disk:40 full ");
}

TEST_F(Logging, ProviderMayAskForTheChannelThatItIsAskedFor) {
    ChannelHandle inner = nullptr;
    bool isFirst = true;
    addProvider("file ", {}, [&](const std::string&) {
        if (std::exchange(isFirst, false)) {
            inner = manager.getChannel("disk");
            manager.log(inner, 10, " mounted");
        }
    });
    // The inner channel stays, and the sinks made for the outer one are released.
    EXPECT_EQ(manager.getChannel("disk"), inner);
    EXPECT_EQ(takeEvents(), "file disk:10 mounted -file disk ");
}

TEST_F(Logging, ProviderMayRegisterAnotherForTheNextChannel) {
    bool isFirst = true;
    addProvider("file ", {}, [&](const std::string&) {
        if (std::exchange(isFirst, false)) {
            addProvider("mail ");
        }
    });
    EXPECT_EQ(manager.getChannel("disk")->channel->sinks.size(), 1U);
    EXPECT_EQ(manager.getChannel("network")->channel->sinks.size(), 2U);
}

TEST_F(Logging, ProviderMayChangeTheCallersName) {
    std::string name = "disk";
    addProvider("file ", {}, [&](const std::string&) { name = "none"; });
    ChannelHandle disk = manager.getChannel(name.c_str());
    EXPECT_EQ(name, "none");
    EXPECT_EQ(manager.getChannel("disk"), disk);
}

[[noreturn]] void throwOnPurpose(const std::string& /*text*/) {
    throw std::runtime_error("on purpose");
}

TEST_F(Logging, ExceptionOfASinkLeavesTheCacheAsItWas) {
    ChannelHandle disk = manager.getChannel("disk");
    manager.log(disk, 10, " mounted");
    addProvider("file ");
    addProvider("broken ", throwOnPurpose);
    addProvider("mail ");
    EXPECT_THROW(attachSinks(*disk->channel), std::runtime_error);
    EXPECT_EQ(disk->channel->cache.size(), 1U);
    EXPECT_THROW(manager.log(disk, 40, " full"), std::runtime_error);
    EXPECT_EQ(disk->channel->cache.size(), 1U);
    EXPECT_EQ(takeEvents(),
              "file disk:10 mounted broken disk:10 mounted "
              "file disk:40 full broken disk:40 full ");
    expectLockFree(manager);
}

TEST_F(Logging, ExceptionOfAProviderLeavesNoChannel) {
    bool isBroken = true;
    addProvider("file ");
    addProvider("network ", {}, [&](const std::string& channel) {
        if (isBroken) {
            throwOnPurpose(channel);
        }
    });
    EXPECT_THROW(manager.getChannel("disk"), std::runtime_error);
    EXPECT_EQ(takeEvents(), "-file disk ");
    isBroken = false;
    expectLockFree(manager);
    EXPECT_EQ(manager.getChannel("disk")->channel->sinks.size(), 2U);
}

TEST_F(Logging, RefusesANullProvider) {
    EXPECT_EQ(complaintOf([&] { manager.registerSinkProvider(nullptr); }),
              "A sink provider must not be null.");
}

const char* const kLongText = "and more of it than a short string holds in place";

// Calls `round(manager, fail)` with a fresh manager, which has one provider.
template <typename Round>
void failEachAllocationWithAManager(Round round) {
    failEachAllocation([&](long, auto failAllocation) {
        ProviderRegistry().swap(providerRegistry);  // which keeps its room
        {
            LogManager manager;
            manager.registerSinkProvider(std::make_unique<TestProvider>("file "));
            round(manager, failAllocation);
            expectLockFree(manager);
        }
        events.clear();
        ProviderRegistry().swap(providerRegistry);
    });
}

TEST_F(Logging, FailedAllocationCreatesNoChannel) {
    failEachAllocationWithAManager([](LogManager& each, auto failAllocation) {
        failAllocation([&] { each.getChannel(kLongText); });
        EXPECT_EQ(each.getChannel(kLongText)->channel->sinks.size(), 1U);
    });
}

TEST_F(Logging, FailedAllocationRegistersNoProvider) {
    failEachAllocationWithAManager([](LogManager& each, auto failAllocation) {
        const bool failed = failAllocation(
            [&] { each.registerSinkProvider(std::make_unique<TestProvider>("mail ")); });
        EXPECT_EQ(providerRegistry.size(), failed ? 1U : 2U);
    });
}

TEST_F(Logging, FailedAllocationCachesNothing) {
    for (const std::size_t cachedBefore : {std::size_t{4}, kCacheCapacity}) {
        failEachAllocationWithAManager([=](LogManager& each, auto failAllocation) {
            ChannelHandle channel = each.getChannel("none");
            for (std::size_t i = 0; i < cachedBefore; ++i) {
                each.log(channel, 10, "");
            }
            const bool failed = failAllocation([&] { each.log(channel, 10, kLongText); });
            EXPECT_EQ(channel->channel->cache.size(), cachedBefore + (failed ? 0 : 1));
            EXPECT_EQ(channel->channel->overflowed != 0, !failed && cachedBefore == kCacheCapacity);
        });
    }
}

TEST_F(Logging, LoggingToASinkAllocatesNothing) {
    addProvider("file ");
    ChannelHandle channel = manager.getChannel(kLongText);
    manager.log(channel, 10, kLongText);  // the first of the process
    expectNoAllocation([&] { manager.log(manager.getChannel(kLongText), 10, kLongText); });
}

TEST_F(Logging, LogMessageLogsUpToANulAndNothingAtLevelZero) {
    static_assert(std::is_nothrow_destructible_v<LogMessage>);
    addProvider("file ");
    ChannelHandle disk = manager.getChannel("disk");
    LogMessage(disk, 0) << "nothing";
    {
        const LogMessage empty(disk, 4'000'000'000);
    }
    LogMessage(disk, 10) << std::string(" cut\0here", 9);
    EXPECT_TRUE(disk->channel->cache.empty());
    EXPECT_EQ(takeEvents(), "file disk:4000000000 file disk:10 cut ");
}

TEST_F(Logging, EndedManagerIsFollowedByAnEmptyOne) {
    addProvider("file ");
    manager.log(manager.getChannel("disk"), 10, " mounted");
    manager.endAtUnload();
    EXPECT_EQ(takeEvents(), "file disk:10 mounted ~file  -file disk ");
    // At process exit, a plug-in's clean-up may log after that.
    ChannelHandle disk = manager.getChannel("disk");
    EXPECT_TRUE(disk->channel->sinks.empty());
    manager.log(disk, 10, "last words");
    EXPECT_EQ(disk->channel->cache.size(), 1U);
}

TEST(RecursiveMutex, IsFreeOnceEveryLockIsGivenBack) {
    Quend::Framework::RecursiveMutex mutex;
    const auto tryLock = [&] { return std::unique_lock(mutex, std::try_to_lock).owns_lock(); };
    const auto isFree = [&] { return std::async(std::launch::async, tryLock).get(); };
    EXPECT_TRUE(mutex.try_lock());
    mutex.lock();
    EXPECT_TRUE(mutex.try_lock());
    for (int held = 3; held > 0; --held) {
        EXPECT_FALSE(isFree()) << held;
        mutex.unlock();
    }
    EXPECT_TRUE(isFree());
}

}  // namespace
