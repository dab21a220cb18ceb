#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>

#include <Quend/Framework/Exceptions.h>

#include "logging/LogManager.h"
#include "logging/LogMessage.h"
#include "logging/ProviderRegistry.h"
#include "support/Allocations.h"
#include "support/Threads.h"

namespace {

using namespace Quend::Framework::Logging;
using Write = std::function<void(const std::string& text)>;
using Create = std::function<void(const std::string& channel)>;

// What reached the sinks and providers, in order. Not destroyed: sinks may be released later.
std::string& events = *new std::string;
bool isRecording = true;
long liveSinks = 0;

void record(std::initializer_list<std::string_view> parts) {
    for (const auto part : parts) {
        events.append(isRecording ? part : "");
    }
}

struct TestSink final : LogSink {
    TestSink(std::string sinkTag, Write write)
        : tag(std::move(sinkTag)), onWrite(std::move(write)) {
        ++liveSinks;
    }
    virtual ~TestSink() { --liveSinks; }
    void release() noexcept override {
        record({"-", tag, " "});
        delete this;
    }
    void write(std::uint32_t level, const char* text) override {
        if (isRecording) {
            record({tag, ":", std::to_string(level), text, " "});
        }
        if (onWrite) {
            onWrite(text);
        }
    }
    std::string tag;
    Write onWrite;
};

// Its sinks are tagged with its own tag and the channel's name. "none" gets no sink.
struct TestProvider final : LogSinkProvider {
    explicit TestProvider(std::string providerTag, Write write = {}, Create create = {})
        : tag(std::move(providerTag)), onWrite(std::move(write)), onCreate(std::move(create)) {}
    ~TestProvider() override { record({"~", tag, " "}); }
    LogSink* createSink(const char* channel) override {
        if (onCreate) {
            onCreate(channel);
        }
        return channel == std::string("none") ? nullptr : new TestSink(tag + channel, onWrite);
    }
    std::string tag;
    Write onWrite;
    Create onCreate;
};

void addProvider(LogManager& manager, std::string tag, Write write = {}, Create create = {}) {
    manager.registerSinkProvider(
        std::make_unique<TestProvider>(std::move(tag), std::move(write), std::move(create)));
}

std::string takeEvents() { return std::exchange(events, {}); }

// Another thread gets the lock: nobody left it held.
void expectLockFree(LogManager& manager) {
    std::thread([&] { manager.getChannel("none"); }).join();
}

TEST(Logging, DispatchFollowsSinksRegistryLevelAndEnabled) {
    // By [has sinks][has registry][level is not 0][enabled].
    const std::string expected = "ccccccccccccccdw";  // cached, dropped, written
    for (unsigned i = 0; i < 16; ++i) {
        const std::uint32_t level = (i & 2U) != 0 ? 10 : 0;
        LogManager manager;
        addProvider(manager, "p");
        auto* const handle = manager.getChannel((i & 8U) != 0 ? "c" : "none");
        if ((i & 4U) == 0) {
            providerRegistry.clear();
        }
        handle->channel->enabled = (i & 1U) != 0;
        takeEvents();
        manager.log(handle, level, "text");
        const auto& cache = handle->channel->cache;
        EXPECT_EQ(takeEvents(), expected[i] == 'w' ? "pc:10text " : "") << i;
        ASSERT_EQ(cache.size(), expected[i] == 'c' ? 1U : 0U) << i;
        for (const auto& kept : cache) {
            EXPECT_EQ(kept.level, level);
            EXPECT_EQ(kept.text, "text");
        }
    }
}

TEST(Logging, ChannelsAreToldApartByTheBytesOfTheirNames) {
    LogManager manager;
    std::set<ChannelHandle> handles;
    for (const char* name : {"", "a", "A", "aa", "a ", "\xff", "a"}) {
        auto* const handle = manager.getChannel(std::string(name).c_str());
        EXPECT_EQ(handle->channel->name, name);
        handles.insert(handle);
    }
    EXPECT_EQ(handles.size(), 6U);
}

TEST(Logging, CacheKeepsTheOldestAndOneMarker) {
    const char* const marker = "40LOG Cache overflow...";
    for (const std::size_t logged : {0U, 1U, 100U, 101U, 102U, 103U, 500U}) {
        for (const std::string providers : {"", "a", "ab"}) {
            SCOPED_TRACE(std::to_string(logged) + providers);
            LogManager manager;
            auto* const handle = manager.getChannel("c");
            LogChannel& channel = *handle->channel;
            std::string expected;
            for (std::size_t i = 0; i < logged; ++i) {
                const std::string text = std::to_string(1000 + i);
                manager.log(handle, 1, text.substr(1).c_str());
                for (const char tag : i <= 101 ? providers : "") {
                    expected.append(1, tag).append("c:").append(i < 101 ? text.c_str() : marker);
                    expected += ' ';
                }
            }
            EXPECT_EQ(channel.cache.size(), std::min<std::size_t>(logged, 102));
            EXPECT_EQ(channel.overflowed, logged > 101 ? 1U : 0U);
            for (const char tag : providers) {
                addProvider(manager, std::string(1, tag));
            }
            takeEvents();
            attachSinks(channel);
            EXPECT_EQ(takeEvents(), expected);
            EXPECT_EQ(channel.overflowed, 0U);
            manager.log(handle, 0, "next");
            EXPECT_EQ(channel.cache.size(), 1U);
        }
    }
}

TEST(Logging, ReplayIntoThrowingOrLoggingSink) {
    LogManager manager;
    auto* const handle = manager.getChannel("c");
    LogChannel& channel = *handle->channel;
    for (const char* text : {"1", "2", "3"}) {
        manager.log(handle, 7, text);
    }
    bool isThrowing = true;
    addProvider(manager, "p", [&](const std::string& text) {
        if (isThrowing && text == "2") {
            throw std::runtime_error("sink");
        }
        if (text == "1") {  // grows the cache that is being replayed
            for (int i = 0; i < 40; ++i) {
                manager.log(handle, 0, "+");
            }
        }
    });
    addProvider(manager, "q");
    EXPECT_THROW(attachSinks(channel), std::runtime_error);
    EXPECT_EQ(channel.cache.size(), 43U);
    expectLockFree(manager);
    isThrowing = false;
    for (LogSink* const sink : channel.sinks) {
        sink->release();  // the next attachment forgets it
    }
    takeEvents();
    attachSinks(channel);
    std::string expected = "pc:71 qc:71 pc:72 qc:72 pc:73 qc:73 ";
    for (int i = 0; i < 80; ++i) {
        expected += "pc:0+ qc:0+ ";
    }
    EXPECT_EQ(takeEvents(), expected);
    EXPECT_TRUE(channel.cache.empty());
}

TEST(Logging, SinksAndProvidersMayCallBack) {
    LogManager manager;
    ChannelHandle a = nullptr;
    ChannelHandle inner = nullptr;
    addProvider(
        manager, "p",
        [&](const std::string& text) {
            if (text == "outer") {
                manager.log(a, 1, "same");
                manager.log(manager.getChannel("b"), 1, "another");
                manager.log(manager.getChannel("new"), 1, "new");
            }
        },
        [&](const std::string& channel) {
            if (channel == "a") {
                manager.log(manager.getChannel("b"), 2, "asked");
            } else if (channel == "own" && std::exchange(inner, a) == nullptr) {
                manager.log(inner = manager.getChannel("own"), 2, "inner");
            } else if (channel == "c") {
                addProvider(manager, "late");
            }
        });
    addProvider(manager, "q");
    a = manager.getChannel("a");
    EXPECT_EQ(takeEvents(), "pb:2asked qb:2asked ");
    manager.log(a, 1, "outer");
    EXPECT_EQ(takeEvents(),
              "pa:1outer pa:1same qa:1same pb:1another qb:1another pnew:1new qnew:1new qa:1outer ");
    // Asked from inside for the name at hand: the inner channel stays, the outer one's sinks go.
    auto* const own = manager.getChannel("own");
    EXPECT_EQ(takeEvents(), "pown:2inner qown:2inner -pown -qown ");
    EXPECT_EQ(own, inner);
    manager.log(own, 1, "x");
    EXPECT_EQ(takeEvents(), "pown:1x qown:1x ");
    // A provider registered from inside is first asked for the next channel.
    EXPECT_EQ(manager.getChannel("c")->channel->sinks.size(), 2U);
    EXPECT_EQ(manager.getChannel("d")->channel->sinks.size(), 3U);
    expectLockFree(manager);
}

TEST(Logging, ExceptionsPassThroughAndLeaveNothingBehind) {
    bool isThrowing = true;
    const auto throwIf = [&](auto&&...) {
        if (isThrowing) {
            throw std::runtime_error("plug-in");
        }
    };
    LogManager manager;
    manager.getChannel("none");
    addProvider(manager, "p");
    addProvider(manager, "q", throwIf, throwIf);
    EXPECT_THROW(manager.getChannel("c"), std::runtime_error);
    EXPECT_EQ(takeEvents(), "-pc ");
    EXPECT_EQ(liveSinks, 0);
    expectLockFree(manager);
    isThrowing = false;
    auto* const handle = manager.getChannel("c");
    isThrowing = true;
    takeEvents();
    EXPECT_THROW(manager.log(handle, 1, "x"), std::runtime_error);
    EXPECT_EQ(takeEvents(), "pc:1x qc:1x ");
    EXPECT_TRUE(handle->channel->cache.empty());
    expectLockFree(manager);
    EXPECT_THROW(manager.registerSinkProvider(nullptr),
                 Quend::Framework::Exceptions::InvalidArgument);
}

TEST(Logging, ShutdownDeletesProvidersThenReleasesSinksInOrder) {
    {
        LogManager manager;
        addProvider(manager, "2");
        addProvider(manager, "1");
        for (const char* name : {"b", "\xff", "none", "a"}) {
            manager.log(manager.getChannel(name), 0, "never written");
        }
    }
    EXPECT_EQ(takeEvents(), "~2 ~1 -2a -1a -2b -1b -2\xff -1\xff ");
    EXPECT_TRUE(providerRegistry.empty());
    EXPECT_EQ(liveSinks, 0);
}

TEST(Logging, ThreadsLogWholeMessagesOneAtATimeInTheirOrder) {
    constexpr unsigned kThreads = 8;
    constexpr unsigned kMessages = 10'000;
    std::array<unsigned, kThreads> next{};
    std::atomic<unsigned> inside{0};
    std::atomic<unsigned> wrong{0};
    registerSinkProvider(std::make_unique<TestProvider>("p", [&](const std::string& text) {
        wrong += inside++;
        const auto thread = static_cast<unsigned>(text.at(0) - '0');
        wrong += text.substr(1) == " says " + std::to_string(next.at(thread)++) ? 0 : 1;
        --inside;
    }));
    tests::inThreads(kThreads, [](unsigned thread) {
        for (unsigned i = 0; i < kMessages; ++i) {
            const std::string channel(1, static_cast<char>('a' + i % 5));
            LogMessage(getChannel(channel.c_str()), 10) << thread << " says " << i;
        }
    });
    EXPECT_EQ(wrong, 0U);
    for (const unsigned count : next) {
        EXPECT_EQ(count, kMessages);
    }
    logManager.shutdownLogging();  // what its sinks refer to ends here
}

const char* const kLongText = "and more of it than a short string holds in place";

TEST(Logging, FailedAllocationLeavesTheStatedState) {
    isRecording = false;
    enum Step { kGetChannel, kCache, kCacheMarker, kRegister };
    for (const Step step : {kGetChannel, kCache, kCacheMarker, kRegister}) {
        SCOPED_TRACE(step);
        tests::failEachAllocation([&](long, auto fail) {
            const struct GiveBackRegistry {  // which keeps its room
                ~GiveBackRegistry() { ProviderRegistry().swap(providerRegistry); }
            } giveBackRegistry;
            LogManager manager;
            auto* const handle = manager.getChannel("none");
            LogChannel& channel = *handle->channel;
            const std::size_t cached = step == kCacheMarker ? 101 : 4;
            for (std::size_t i = 0; i < cached; ++i) {
                manager.log(handle, 1, kLongText);
            }
            addProvider(manager, "p");
            addProvider(manager, kLongText);
            const std::array<std::function<void()>, 4> steps = {
                [&] { manager.getChannel(kLongText); }, [&] { manager.log(handle, 1, kLongText); },
                [&] { manager.log(handle, 1, kLongText); }, [&] { addProvider(manager, "q"); }};
            const bool failed = fail([&] { steps.at(step)(); });
            const auto ifDone = [&](Step which) { return !failed && step == which ? 1U : 0U; };
            EXPECT_EQ(liveSinks, 2 * ifDone(kGetChannel));
            EXPECT_EQ(providerRegistry.size(), 2 + ifDone(kRegister));
            EXPECT_EQ(channel.cache.size(), cached + ifDone(kCache) + ifDone(kCacheMarker));
            EXPECT_EQ(channel.overflowed, ifDone(kCacheMarker));
            expectLockFree(manager);
            EXPECT_EQ(manager.getChannel(kLongText)->channel->sinks.size(),
                      providerRegistry.size());
            return 0L;
        });
    }
}

TEST(Logging, LoggingToASinkAllocatesNothing) {
    isRecording = false;
    registerSinkProvider(std::make_unique<TestProvider>("p"));
    const LogChannel& channel = *getChannel(kLongText)->channel;
    log(getChannel(kLongText), 1, kLongText);  // the first of the process
    const long before = tests::allocationsSoFar();
    log(getChannel(kLongText), 1, kLongText);
    EXPECT_EQ(tests::allocationsSoFar(), before);
    EXPECT_TRUE(channel.cache.empty());
}

TEST(Logging, LogMessageEmitsExactlyWhatWasInserted) {
    static_assert(std::is_nothrow_destructible_v<LogMessage>);
    registerSinkProvider(std::make_unique<TestProvider>("p"));
    auto* const handle = getChannel("c");
    LogMessage(handle, 0) << "nothing";
    { const LogMessage empty(handle, 4'000'000'000); }
    LogMessage(handle, 10) << "a=" << 1 << ' ' << std::hex << 255 << std::endl << 0.5;
    LogMessage(handle, 10) << std::string("cut\0here", 8);
    EXPECT_TRUE(handle->channel->cache.empty());
    EXPECT_EQ(takeEvents(), "pc:4000000000 pc:10a=1 ff\n0.5 pc:10cut ");
}

#ifndef _MSC_VER  // where a pointer to a virtual member holds one more than its byte offset
template <typename Member>
std::size_t slotOf(Member member) {
    std::array<std::size_t, 2> words{};
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words.data(), &member, sizeof(words));
    return (words[0] - 1) / sizeof(void*);
}

TEST(Logging, VirtualOperationsStandInTheOrderThatPluginsKnow) {
    EXPECT_EQ(slotOf(&LogSink::reserved), 0U);
    EXPECT_EQ(slotOf(&LogSink::release), 1U);
    EXPECT_EQ(slotOf(&LogSink::write), 2U);
    EXPECT_EQ(slotOf(&LogSinkProvider::createSink), 2U);  // after the two of the destructor
}
#endif

}  // namespace
