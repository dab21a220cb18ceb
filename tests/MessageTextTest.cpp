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

struct Values {
    std::uint64_t bits = 0;  // random
    unsigned field : 5 = bits % 32;
    char array[9] = "an array";
    Odd odd = {};
};
using Row = std::pair<void (*)(LogMessage&, Values&), void (*)(std::ostream&, Values&)>;
// One table of types and values.
// clang-format off
#define ROW(...) {[](LogMessage& out, [[maybe_unused]] Values& v) { out << __VA_ARGS__; }, \
                  [](std::ostream& out, [[maybe_unused]] Values& v) { out << __VA_ARGS__; }}
constexpr std::size_t kWithoutStream = 13;  // the first of these
constexpr Row kRows[] = {
    ROW("a literal"), ROW(v.array), ROW(v.array[v.bits % 8]), ROW(std::string(v.bits % 900, 'y')),
    ROW(std::string_view(v.array)), ROW(static_cast<short>(v.bits)), ROW(static_cast<int>(v.bits)),
    ROW(static_cast<long long>(v.bits)), ROW(v.bits), ROW(v.field), ROW(Declared::number),
    ROW(std::bit_cast<double>(v.bits)), ROW(static_cast<float>(v.field) / 1000),
    ROW(v.odd), ROW(Declared::scoped), ROW(std::ios_base::beg), ROW(static_cast<unsigned char>(*v.array)),
    ROW((v.field == 0)), ROW(static_cast<long double>(v.bits) / 7), ROW(nullptr), ROW(std::endl),
#ifdef __GLIBCXX__  // undefined in the language; this library stops the stream
    ROW((v.field == 0 ? static_cast<const char*>(nullptr) : "another")),
#endif
    ROW(resetFormat), ROW(std::setw(v.field)), ROW((v.field < 9 ? std::hex : std::showpos))};
// clang-format on

constexpr std::size_t kNearTheEnd = 236;  // of a buffer of 256 characters
constexpr std::size_t kLengthsNearTheEnd = 21;

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

TEST(LogMessage, HoldsWhatAStreamHolds) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const std::locale grouping(std::locale::classic(), new tests::Grouping);
    for (std::size_t round = 0; round < 20'000 && !HasFailure(); ++round) {
        ChannelSlot slot{std::make_unique<LogChannel>("without a sink, so it keeps its messages")};
        const std::locale before =
            std::locale::global(random() % 8 == 0 ? grouping : std::locale());
        std::ostringstream stream;
        std::optional<LogMessage> message(std::in_place, &slot, 10);
        std::locale::global(before);  // the one at the beginning counts
        const auto insert = [&](const Row& row, Values ours) {
            Values theirs = ours;
            row.first(*message, ours);
            row.second(stream, theirs);
        };
        // Each row in turn at the beginning and around the end of the buffer; then any others.
        std::string filling;
        if (round % 2 == 1) {
            filling.assign(kNearTheEnd + round / 2 % kLengthsNearTheEnd, 'z');
        }
        *message << filling;
        stream << filling;
        insert(kRows[round / (2 * kLengthsNearTheEnd) % std::size(kRows)], {random()});
        const auto rows = random() % 2 == 0 ? kWithoutStream : std::size(kRows);
        for (auto count = random() % 12; count > 0; --count) {
            insert(kRows[random() % rows], {random()});
        }
        message.reset();
        EXPECT_EQ(slot.channel->cache.back().text, stream.str());
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
