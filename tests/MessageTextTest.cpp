// The native build does not optimise this file: there, a constant that is declared but not defined
// does not link if it is taken by reference.
#include <bit>
#include <iomanip>

#include "logging/LogMessage.h"
#include "logging/MessageText.h"
#include "support/Allocations.h"
#include "support/Test.h"

namespace {

using namespace Quend::Framework::Logging;

enum class Scoped { kScoped };
std::ostream& operator<<(std::ostream& stream, Scoped /*value*/) { return stream << "scoped"; }
struct Declared {  // and defined nowhere
    static const int number = 7;
    static const Scoped scoped = Scoped::kScoped;
};
struct Odd {  // converts to text, and has an inserter of its own, which changes it
    operator const char*() const { return "converted"; }
    operator std::string_view() const { return "converted"; }
    int insertions = 0;
};
std::ostream& operator<<(std::ostream& stream, Odd& odd) { return stream << ++odd.insertions; }
template <typename C>  // which cannot be deduced from the name alone
std::basic_ios<C>& resetFormat(std::basic_ios<C>& s) {
    return s.copyfmt(std::basic_ios<C>(nullptr));
}

// What is inserted; the numbers and lengths are random.
struct Values {
    std::uint64_t bits = 0;
    unsigned field : 5 = bits % 32;
    char array[9] = "an array";
    Odd odd = {};
};

// One insertion, into a message and into a stream.
struct Row {
    void (*intoMessage)(LogMessage& out, Values& values);
    void (*intoStream)(std::ostream& out, Values& values);
};
template <typename Insert>
Row row(Insert /*insert*/) {
    return {.intoMessage = [](LogMessage& out, Values& values) { Insert()(out, values); },
            .intoStream = [](std::ostream& out, Values& values) { Insert()(out, values); }};
}

const Row kRows[] = {
    row([](auto& out, auto&) { out << "a literal"; }),
    row([](auto& out, auto& v) { out << v.array; }),
    row([](auto& out, auto& v) { out << v.array[v.bits % 8]; }),
    row([](auto& out, auto& v) { out << std::string(v.bits % 900, 'y'); }),
    row([](auto& out, auto& v) { out << std::string_view(v.array); }),
    row([](auto& out, auto& v) { out << static_cast<short>(v.bits); }),
    row([](auto& out, auto& v) { out << static_cast<int>(v.bits); }),
    row([](auto& out, auto& v) { out << static_cast<long long>(v.bits); }),
    row([](auto& out, auto& v) { out << v.bits; }),
    row([](auto& out, auto& v) { out << v.field; }),
    row([](auto& out, auto&) { out << Declared::number; }),
    row([](auto& out, auto& v) { out << std::bit_cast<double>(v.bits); }),
    row([](auto& out, auto& v) { out << static_cast<float>(v.field) / 1000; }),
    // From here on, a message needs a stream.
    row([](auto& out, auto& v) { out << v.odd; }),
    row([](auto& out, auto&) { out << Declared::scoped; }),
    row([](auto& out, auto&) { out << std::ios_base::beg; }),
    row([](auto& out, auto& v) { out << static_cast<unsigned char>(*v.array); }),
    row([](auto& out, auto& v) { out << (v.field == 0); }),
    row([](auto& out, auto& v) { out << static_cast<long double>(v.bits) / 7; }),
    row([](auto& out, auto&) { out << nullptr; }),
    row([](auto& out, auto&) { out << std::endl; }),
#ifdef __GLIBCXX__  // undefined in the language; this library stops the stream
    row([](auto& out, auto&) { out << static_cast<const char*>(nullptr); }),
#endif
    row([](auto& out, auto&) { out << resetFormat; }),
    row([](auto& out, auto& v) { out << std::setw(v.field); }),
    row([](auto& out, auto&) { out << std::hex; }),
    row([](auto& out, auto&) { out << std::showpos; }),
};

TEST(LogMessage, LogsWhatWasInsertedWhenItGoesOutOfScope) {
    ChannelSlot slot{std::make_unique<LogChannel>("without a sink, so it keeps its messages")};
    const std::string file = "names.txt";
    {
        LogMessage message(&slot, 10);
        message << "Read " << 3 << " of " << file << " in " << 0.25 << " s, at ";
        message << std::hex << std::showbase << 255;
        EXPECT_TRUE(slot.channel->cache.empty());
    }
    EXPECT_EQ(slot.channel->cache.back().level, 10U);
    EXPECT_EQ(slot.channel->cache.back().text, "Read 3 of names.txt in 0.25 s, at 0xff");
}

// Every two insertions, at the beginning of a message and around the end of its buffer, which has
// room for 255 characters.
TEST(LogMessage, HoldsWhatAStreamHolds) {
    std::vector<std::string> beginnings = {""};
    for (std::size_t length = 236; length <= 256; ++length) {
        beginnings.emplace_back(length, 'z');
    }
    const std::locale& plain = std::locale::classic();
    const std::locale grouping(plain, new tests::Grouping);
    std::mt19937_64 random(1);
    for (const Row& first : kRows) {
        for (const Row& second : kRows) {
            for (const std::string& beginning : beginnings) {
                ChannelSlot slot{std::make_unique<LogChannel>("no sinks")};
                std::locale::global(random() % 8 == 0 ? grouping : plain);
                std::ostringstream stream;
                std::optional<LogMessage> message(std::in_place, &slot, 10);
                std::locale::global(plain);  // the one at the beginning counts

                Values ours = {.bits = random()};
                Values theirs = ours;
                *message << beginning;
                first.intoMessage(*message, ours);
                second.intoMessage(*message, ours);
                stream << beginning;
                first.intoStream(stream, theirs);
                second.intoStream(stream, theirs);
                message.reset();
                ASSERT_EQ(slot.channel->cache.back().text, stream.str());
            }
        }
    }
}

TEST(MessageText, KeepsWhatWasInsertedBeforeMemoryRanOut) {
    const std::string line(40, 'l');
    const std::string page(300, 'p');
    const std::string book(700, 'b');
    const std::string nearlyFull(250, 'n');
    struct Loss {
        const char* when;
        std::string kept;
        std::function<void(MessageText&)> lose;
    };
    const Loss losses[] = {
        {.when = "the text outgrows the buffer",
         .kept = line,
         .lose = [&](MessageText& text) { text.insert(book); }},
        {.when = "a number outgrows the buffer",
         .kept = nearlyFull,
         .lose = [](MessageText& text) { text.insert(1'234'567); }},
        {.when = "the long text grows",
         .kept = page,
         .lose = [&](MessageText& text) { text.insert(book); }},
        {.when = "a stream is to take the text over",
         .kept = line,
         .lose = [](MessageText& text) { text.insert(std::setw(9)); }},
        {.when = "a stream is to take the long text over",
         .kept = page,
         .lose = [](MessageText& text) { text.insert(std::setw(9)); }},
    };
    for (const Loss& loss : losses) {
        SCOPED_TRACE(loss.when);
        MessageText text;
        text.insert(loss.kept);
        {
            const tests::AllocationFault fault(1, true);
            loss.lose(text);
            EXPECT_TRUE(tests::AllocationFault::happened());
        }
        text.insert('c');  // there is memory again, but the message is not complete
        text.insert(7);
        text.insert(page);
        text.insert(std::boolalpha);
        text.insert(true);
        EXPECT_EQ(text.finish(), loss.kept);
    }
}

}  // namespace
