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
    auto* const handle = manager.getChannel("c");
    manager.log(handle, 7, "first");
    int more = 40;  // so many that the records move
    addProvider("p", [&](const std::string&) {
        if (more > 0) {
            --more;
            manager.log(handle, 0, "+");
        }
    });
    attachSinks(*handle->channel);
    const std::string written = takeEvents();
    EXPECT_TRUE(written.starts_with("pc:7first pc:0+ ") && written.size() == 250) << written;
    EXPECT_TRUE(handle->channel->cache.empty());
}

TEST_F(Logging, SinksAndProvidersMayCallBack) {
    ChannelHandle inner = nullptr;
    std::string name = "changed";
    const auto write = [&](const std::string& text) {
        if (text == "outer") {
            for (const char* channel : {"a", "b", "new"}) {
                manager.log(manager.getChannel(channel), 1, channel);
            }
        }
    };
    const auto create = [&](const std::string& channel) {
        if (channel == "a") {
            manager.log(manager.getChannel("b"), 2, "asked");
        } else if (channel == "own" && inner == nullptr) {
            inner = manager.getChannel("b");  // any, so that the inner call does not come here
            manager.log(inner = manager.getChannel("own"), 2, "inner");
        } else if (channel == "changed") {
            name = "since";
        } else if (channel == "c") {
            addProvider("late");
        }
    };
    addProvider("p", write, create);
    addProvider("q");
    manager.log(manager.getChannel("a"), 1, "outer");
    EXPECT_EQ(takeEvents(),
              "pb:2asked qb:2asked "
              "pa:1outer pa:1a qa:1a pb:1b qb:1b pnew:1new qnew:1new qa:1outer ");
    // A provider asks for the same name: the inner channel stays, the outer's sinks are released.
    auto* const own = manager.getChannel("own");
    EXPECT_EQ(own, inner);
    EXPECT_EQ(takeEvents(), "pown:2inner qown:2inner -pown -qown ");
    // The caller's text is not read again after a provider has changed it.
    auto* const changed = manager.getChannel(name.c_str());
    EXPECT_EQ(changed, manager.getChannel("changed"));
    EXPECT_EQ(name, "since");
    // A provider registered from inside is first asked for the next channel.
    EXPECT_EQ(manager.getChannel("c")->channel->sinks.size(), 2U);
    EXPECT_EQ(manager.getChannel("d")->channel->sinks.size(), 3U);
    expectLockFree(manager);
}

TEST_F(Logging, ExceptionsPassThroughAndLeaveNothingBehind) {
    bool isThrowing = true;
    const auto throwOnce = [&](auto&&...) {
        if (std::exchange(isThrowing, false)) {
            throw std::runtime_error("plug-in");
        }
    };
    addProvider("p");
    addProvider("q", throwOnce, throwOnce);
    EXPECT_THROW(manager.getChannel("c"), std::runtime_error);
    EXPECT_EQ(takeEvents(), "-pc ");
    auto* const handle = manager.getChannel("c");
    LogChannel& channel = *handle->channel;
    isThrowing = true;
    EXPECT_THROW(manager.log(handle, 1, "x"), std::runtime_error);
    EXPECT_TRUE(channel.cache.empty());
    manager.log(handle, 0, "cached");
    isThrowing = true;
    EXPECT_THROW(replayCache(channel), std::runtime_error);
    EXPECT_EQ(channel.cache.size(), 1U);
    EXPECT_EQ(takeEvents(), "pc:1x qc:1x pc:0cached qc:0cached ");
    expectLockFree(manager);
    EXPECT_EQ(complaintOf([&] { manager.registerSinkProvider(nullptr); }),
              "A sink provider must not be null.");
}

const char* const kLongText = "and more of it than a short string holds in place";

// What a failure could leave behind: providers, messages in the cache, its overflow.
using State = std::tuple<ProviderRegistry, std::size_t, std::uint32_t>;
State stateOf(const LogChannel& channel) {
    return {providerRegistry, channel.cache.size(), channel.overflowed};
}

TEST_F(Logging, FailedAllocationChangesNothing) {
    const struct {
        const char* what{};
        void (*call)(LogManager&, ChannelHandle){};
        std::size_t cachedBefore = 0;
        bool isSeenInTheState = true;
    } cases[] = {
        {.what = "a channel is created",
         .call = [](LogManager& each, ChannelHandle) { each.getChannel(kLongText); },
         .isSeenInTheState = false},
        {.what = "a message is cached",
         .call = [](LogManager& each, ChannelHandle channel) { each.log(channel, 1, kLongText); },
         .cachedBefore = 4},
        {.what = "the cache overflows",
         .call = [](LogManager& each, ChannelHandle channel) { each.log(channel, 1, ""); },
         .cachedBefore = kCacheCapacity},
        {.what = "a provider is registered",
         .call =
             [](LogManager& each, ChannelHandle) {
                 each.registerSinkProvider(std::make_unique<TestProvider>("q"));
             }},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        failEachAllocation([&](long, auto fail) {
            ProviderRegistry().swap(providerRegistry);  // which keeps its room
            LogManager each;
            auto* const handle = each.getChannel("none");
            for (std::size_t i = 0; i < row.cachedBefore; ++i) {
                each.log(handle, 1, kLongText);
            }
            each.registerSinkProvider(std::make_unique<TestProvider>("p"));
            const State before = stateOf(*handle->channel);
            const bool failed = fail([&] { row.call(each, handle); });
            EXPECT_EQ(stateOf(*handle->channel) == before, failed || !row.isSeenInTheState);
            expectLockFree(each);
            EXPECT_EQ(each.getChannel(kLongText)->channel->sinks.size(), providerRegistry.size());
            each.shutdownLogging();
            events.clear();
            ProviderRegistry().swap(providerRegistry);
        });
    }
}

TEST_F(Logging, LoggingToASinkAllocatesNothing) {
    addProvider("p");
    auto* const handle = manager.getChannel(kLongText);
    manager.log(handle, 1, kLongText);  // the first of the process
    expectNoAllocation([&] { manager.log(manager.getChannel(kLongText), 1, kLongText); });
}

TEST_F(Logging, LogMessageLogsUpToANulAndNothingAtLevelZero) {
    static_assert(std::is_nothrow_destructible_v<LogMessage>);
    addProvider("p");
    auto* const handle = manager.getChannel("c");
    LogMessage(handle, 0) << "nothing";
    {
        const LogMessage empty(handle, 4'000'000'000);
    }
    LogMessage(handle, 10) << std::string("cut\0here", 8);
    EXPECT_TRUE(handle->channel->cache.empty());
    EXPECT_EQ(takeEvents(), "pc:4000000000 pc:10cut ");
}

TEST_F(Logging, EndedManagerIsFollowedByAnEmptyOne) {
    addProvider("p");
    manager.log(manager.getChannel("c"), 1, "text");
    manager.endAtUnload();
    EXPECT_EQ(takeEvents(), "pc:1text ~p -pc ");
    // At process exit, a plug-in's clean-up may log after that.
    auto* const channel = manager.getChannel("c");
    EXPECT_TRUE(channel->channel->sinks.empty());
    manager.log(channel, 1, "last words");
    EXPECT_EQ(channel->channel->cache.size(), 1U);
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
