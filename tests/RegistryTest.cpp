#include <gtest/gtest.h>

#include <shlwapi.h>

#include <array>
#include <clocale>
#include <functional>
#include <iostream>
#include <locale>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "Quend/RegistryAccess/Registry.h"
#include "Quend/RegistryAccess/RegistryErrors.h"
#include "support/Allocations.h"
#include "support/ImportPatch.h"
#include "support/ProcessFigures.h"

namespace {

using Quend::RegistryAccess::Registry;
using Error = Registry::GenericRegistryError;
using Call = std::function<void(const Registry&)>;

static_assert(!std::is_base_of_v<std::exception, Error> && sizeof(Error) == 2 * sizeof(void*));
static_assert(sizeof(Registry) == sizeof(std::string) + sizeof(void*));

std::vector<char> chars(const std::string& text) { return {text.begin(), text.end()}; }

// "Class: message" of what the call throws, or "" if nothing; what() has the usual form.
std::string outcome(const Call& call, const Registry& key) {
    try {
        call(key);
    } catch (const Error& error) {
        static const std::regex form(R"(Exception 'class Quend::RegistryAccess::Registry::(\w+)' )"
                                     R"(\(Quend/RegistryAccess/Registry:\d+\)(: .*))");
        return std::regex_replace(error.what(), form, "$1$2");
    }
    return "";
}

// Notes each of the program's calls of a function but the closing ones, and the open keys.
std::string journal;
int openKeys = 0;

template <int, typename Function>
class Noted;
template <int N, typename Result, typename... Arguments>
class Noted<N, Result WINAPI(Arguments...)> {
 public:
    explicit Noted(const char* function, int change = 0)
        : patch(function, reinterpret_cast<void*>(&call)) {
        journal.reserve(1000);  // noting allocates nothing
        name = function;
        keys = change;
        original = patch.template original<Result WINAPI(Arguments...)>();
    }

 private:
    static Result WINAPI call(Arguments... arguments) {
        const Result result = original(arguments...);
        if (keys < 0) {
            --openKeys;  // whatever the answer: a second closing is a fault
        } else {
            (journal += name) += ' ';
            openKeys += result == 0 ? keys : 0;
        }
        return result;
    }
    static inline const char* name;
    static inline int keys;
    static inline Result(WINAPI* original)(Arguments...);
    tests::ImportPatch patch;
};
struct NotedCalls {
    Noted<0, decltype(RegOpenKeyW)> open{"RegOpenKeyW", 1};
    Noted<1, decltype(RegCreateKeyW)> create{"RegCreateKeyW", 1};
    Noted<2, decltype(RegCloseKey)> close{"RegCloseKey", -1};
    Noted<3, decltype(RegQueryValueExW)> query{"RegQueryValueExW"};
    Noted<4, decltype(RegEnumValueW)> enumValue{"RegEnumValueW"};
    Noted<5, decltype(RegSetValueExW)> set{"RegSetValueExW"};
    Noted<6, decltype(RegDeleteValueW)> deleteValue{"RegDeleteValueW"};
    Noted<7, decltype(RegEnumKeyW)> enumKey{"RegEnumKeyW"};
    Noted<8, decltype(SHDeleteKeyW)> deleteKey{"SHDeleteKeyW"};
};

// Each test has a key of its own with two values and two sub keys, gone when it ends. What
// killed tests left behind is swept first.
struct RegistryTest : testing::Test {
    RegistryTest() {
        const Registry all =
            Registry(HKEY_CURRENT_USER, "Software").createSubKey("QuendFrameworkTests");
        for (const Registry& left : all.getSubKeys()) {
            auto* const owner = OpenProcess(SYNCHRONIZE, FALSE, std::stoul(left.getName()));
            if (owner == nullptr || left.getName() == pid) {
                all.deleteSubKey(left.getName());
            }
            CloseHandle(owner);
        }
        key = all.createSubKey(pid);
        key.setIntValue("number", 0x80000001);
        key.setStringValue("text", chars("some"));
        key.createSubKey("a");
        key.createSubKey(R"(b\c)");
    }
    ~RegistryTest() override { SHDeleteKeyA(HKEY_CURRENT_USER, path.c_str()); }

    void setRaw(const std::wstring& name, DWORD type, const std::string& data) const {
        const std::wstring widePath(path.begin(), path.end());
        const std::string behind = data + "??";  // no NUL, or the platform would count it in
        EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, widePath.c_str(), name.c_str(), type,
                                  behind.c_str(), static_cast<DWORD>(data.size())),
                  0);
    }

    const std::string pid = std::to_string(GetCurrentProcessId());
    const std::string path = R"(Software\QuendFrameworkTests\)" + pid;
    Registry key;
};

// What comes of the code 5, of all that are not listed, and of 259.
struct Outcomes {
    const char* denied;
    const char* other;
    const char* noMore = other;
};
constexpr Outcomes kRead = {"AccessDenied: Not enough permissions to read value.",
                            "OpenError: Unable to open requested value.",
                            "NotFound: The requested value was not found."};
constexpr Outcomes kWrite = {"AccessDenied: Not enough permissions to modify value.",
                             "OpenError: Unable to open requested value.",
                             "NotFound: The value to update was not found."};
constexpr Outcomes kOpen = {"AccessDenied: Not enough permissions to read requested key.",
                            "OpenError: Unable to open requested key."};
constexpr Outcomes kList = {"AccessDenied: Not enough permissions to read sub key enumeration.",
                            "OpenError: Unable to open enumerated sub key.", ""};
constexpr Outcomes kDelete = {"AccessDenied: Not enough permissions to delete value.",
                              "NotFound: Unable to delete given value."};
constexpr Outcomes kDeleteKey = {"AccessDenied: Not enough permissions to delete sub key.",
                                 "NotFound: Unable to delete given key."};
constexpr Outcomes kCreate = {"AccessDenied: Not enough permissions to create requested key.",
                              "CreationError: Unable to create requested key."};
constexpr Outcomes kConstruct = {"AccessDenied: Unable to open requested key",
                                 "OpenError: Unable to open requested key"};
constexpr const char* kUnbound = "NotInitialized: handle_ != 0: Invalid handle state.";

const struct {
    Call call;
    std::string import;  // the function that fails
    Outcomes outcomes;
    std::string calls{};  // all that are made when none fails, if not only this one
} kOperations[] = {
    {[](auto& k) { k.hasValue("text"); }, "RegQueryValueExW", {"", ""}},
    {[](auto& k) { k.getIntValue("number"); }, "RegQueryValueExW", kRead},
    {[](auto& k) { k.getStringValue("text"); }, "RegEnumValueW", kRead,
     "RegEnumValueW RegEnumValueW "},
    {[](auto& k) { k.setStringValue("text", {}); }, "RegSetValueExW", kWrite},
    {[](auto& k) { k.setIntValue("number", 1); }, "RegSetValueExW", kWrite},
    {[](auto& k) { k.openSubKey("a"); }, "RegOpenKeyW", kOpen},
    {[](auto& k) { k.createSubKey("a"); }, "RegCreateKeyW", kCreate},
    {[](auto& k) { k.getSubKeys(); }, "RegEnumKeyW", kList,
     "RegEnumKeyW RegOpenKeyW RegEnumKeyW RegOpenKeyW RegEnumKeyW "},
    {[](auto& k) { k.getSubKeys(); }, "RegOpenKeyW", kOpen,
     "RegEnumKeyW RegOpenKeyW RegEnumKeyW RegOpenKeyW RegEnumKeyW "},
    {[](auto& k) { k.deleteValue("text"); }, "RegDeleteValueW", kDelete},
    {[](auto& k) { k.deleteSubKey("b"); }, "SHDeleteKeyW", kDeleteKey},
    // The last one needs no key.
    {[](auto&) { Registry(HKEY_CURRENT_USER, "Software"); }, "RegOpenKeyW", kConstruct},
};

LSTATUS injectedCode = 0;
LSTATUS fail() { return injectedCode; }

TEST_F(RegistryTest, ResultCodesBecomeExceptions) {
    for (const auto& [call, import, outcomes, calls] : kOperations) {
        const bool isConstructor = &call == &std::end(kOperations)[-1].call;
        EXPECT_EQ(outcome(call, Registry()), isConstructor ? "" : kUnbound) << import;
        const tests::ImportPatch patch(import.c_str(), reinterpret_cast<void*>(&fail));
        for (const LSTATUS code : {5, 259, 2, 6, 87, 234, 258, 260, 1018, -1}) {
            injectedCode = code;
            EXPECT_EQ(outcome(call, key), code == 5     ? outcomes.denied
                                          : code == 259 ? outcomes.noMore
                                                        : outcomes.other)
                << import << ' ' << code;
        }
    }
}

TEST_F(RegistryTest, EachOperationMakesItsPlatformCallsAndNoMore) {
    const NotedCalls noted;
    for (const auto& operation : kOperations) {
        journal.clear();
        EXPECT_EQ(outcome(operation.call, key), "");
        EXPECT_EQ(journal, operation.calls.empty() ? operation.import + " " : operation.calls);
    }
}

TEST_F(RegistryTest, ReadsWhatItWroteAndNothingThatItDeleted) {
    EXPECT_EQ(key.getIntValue("NUMBER"), std::int32_t(0x80000001));
    EXPECT_EQ(key.getStringValue("text"), chars("some"));
    EXPECT_TRUE(key.hasValue("TEXT"));
    key.deleteValue("text");
    EXPECT_FALSE(key.hasValue("text"));
    key.setStringValue("", {});  // the unnamed value
    EXPECT_EQ(key.getStringValue(""), chars(""));
    EXPECT_EQ(key.createSubKey(R"(x\y\)").getName(), R"(x\y\)");
    EXPECT_EQ(key.openSubKey(R"(b\c)").getSubKeys().size(), 0U);
    key.deleteSubKey("b");
    EXPECT_EQ(key.getSubKeys().at(1).getName(), "x");
    EXPECT_EQ(Registry(HKEY_CURRENT_USER, path + '\\').getName(), "");
    EXPECT_EQ(Registry(HKEY_CURRENT_USER, "Software").getName(), "Software");
}

TEST_F(RegistryTest, RealRefusals) {
    const std::string type =
        "OpenError: type == REG_DWORD: Only REG_DWORD value types are supported in getIntValue "
        "function.";
    const auto restricted = [&](REGSAM rights) {
        HKEY handle = nullptr;
        EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, rights, &handle), 0);
        return Registry(handle, "");  // owns it from now on
    };
    const Registry readOnly = restricted(KEY_READ);
    const Registry writeOnly = restricted(KEY_WRITE);
    const Registry gone = key.createSubKey("gone");
    key.deleteSubKey("gone");
    setRaw(L"short", REG_SZ, "a");
    setRaw(L"long", REG_DWORD, "abcde");
    setRaw(L"two bytes", REG_DWORD, "ab");
    EXPECT_EQ(key.getIntValue("two bytes"), 0x6261);
    EXPECT_FALSE(writeOnly.hasValue("text"));
    const struct {
        const Registry& on;
        Call call;
        std::string expected;
    } kCases[] = {
        {key, [](auto&) { Registry(HKEY_CURRENT_USER, "missing"); }, kConstruct.other},
        {key, [](auto& k) { k.getIntValue("missing"); }, kRead.other},
        {key, [](auto& k) { k.getIntValue("short"); }, type},
        {key, [](auto& k) { k.getIntValue("long"); }, kRead.other},
        {key, [](auto& k) { k.getStringValue("missing"); }, kRead.noMore},
        {key, [](auto& k) { k.getStringValue("Text"); }, kRead.noMore},
        {key, [](auto& k) { k.getStringValue("tex"); }, kRead.noMore},
        {key, [](auto& k) { k.deleteValue("missing"); }, kDelete.other},
        {key, [](auto& k) { k.deleteSubKey("missing"); }, kDeleteKey.other},
        {key, [](auto& k) { k.openSubKey("missing"); }, kOpen.other},
        {key, [](auto& k) { k.createSubKey(std::string(300, 'x')); }, kCreate.other},
        {gone, [](auto& k) { k.createSubKey("a"); }, kCreate.other},
        {gone, [](auto& k) { k.getSubKeys(); }, kList.other},
        {readOnly, [](auto& k) { k.setIntValue("n", 1); }, kWrite.denied},
        {readOnly, [](auto& k) { k.setStringValue("t", {}); }, kWrite.denied},
        {readOnly, [](auto& k) { k.deleteValue("text"); }, kDelete.denied},
        {writeOnly, [](auto& k) { k.getIntValue("number"); }, kRead.denied},
        {writeOnly, [](auto& k) { k.getStringValue("text"); }, kRead.denied},
        {writeOnly, [](auto& k) { k.getSubKeys(); }, kList.denied},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(outcome(row.call, row.on), row.expected) << "case " << &row - kCases;
    }
}

// The value before it is longer, so that stale data would show.
TEST_F(RegistryTest, AnyDataIsReadWithinItsBuffer) {
    setRaw(L"a", REG_BINARY, std::string(261, '?'));
    const auto read = [](auto& k) { k.getStringValue("b"); };
    std::string data;
    for (const std::size_t size : {0U, 1U, 2U, 3U, 259U, 260U, 261U, 262U}) {
        while (data.size() < size) {
            data += data.size() % 2 == 0 ? 'x' : '\0';
        }
        setRaw(L"b", REG_SZ, data);
        EXPECT_EQ(outcome(read, key), size > 261 ? kRead.other : "") << size;
        if (size <= 261) {
            EXPECT_EQ(key.getStringValue("b"), std::vector<char>((size + 1) / 2, 'x')) << size;
        }
    }
    setRaw(L"b", REG_DWORD, std::string("x\0\0\0y\0", 6));  // a terminator inside
    EXPECT_EQ(key.getStringValue("b"), chars("x"));
    setRaw(L"b", REG_SZ, std::string("x\0\x42\x30", 4));  // a unit that the C locale has not
    EXPECT_EQ(key.getStringValue("b"), std::vector<char>(2, '\0'));

    setRaw(std::wstring(260, L'a'), REG_DWORD, "");
    EXPECT_EQ(outcome(read, key), "");
    setRaw(std::wstring(261, L'a'), REG_DWORD, "");
    EXPECT_EQ(outcome(read, key), kRead.other);
    const std::string longest = key.createSubKey(std::string(255, 'n')).getName();
    EXPECT_EQ(key.getSubKeys().back().getName(), longest);
}

std::vector<std::wstring> written;
LSTATUS WINAPI noteWritten(HKEY, const wchar_t*, DWORD, DWORD type, const BYTE* data, DWORD size) {
    EXPECT_TRUE(type == REG_SZ && size % 2 == 0);
    written.emplace_back(reinterpret_cast<const wchar_t*>(data), size / 2);
    return 0;
}

TEST_F(RegistryTest, WritesTwoBytesForEachByteOfText) {
    const std::string tail(300, 'y');
    const std::pair<std::string, std::wstring> kCases[] = {
        {"", L""},
        {"ab", L"ab"},
        {std::string("ab\0", 3), std::wstring(L"ab\0", 3)},
        {std::string("a\0b", 3), std::wstring(L"a\0\0", 3)},
        {std::string("a\0", 2) + tail, L'a' + std::wstring(301, L'\0')},
        {"\x82\xa0\x82\xa2", std::wstring(L"\x3042\x3044\0\0", 4)},
    };
    ASSERT_NE(std::setlocale(LC_CTYPE, ".932"), nullptr);
    const tests::ImportPatch patch("RegSetValueExW", reinterpret_cast<void*>(&noteWritten));
    for (const auto& [text, units] : kCases) {
        key.setStringValue("v", chars(text));
        EXPECT_EQ(written.back(), units);
    }
    written.clear();
    EXPECT_THROW(key.setStringValue("v", chars("\x82")), std::length_error);
    EXPECT_THROW(key.setStringValue("\x82", {}), std::length_error);
    EXPECT_TRUE(written.empty());
}

long allocationsLeft = 0;
decltype(std::malloc)* realMalloc = nullptr;
void* faultyMalloc(std::size_t size) { return --allocationsLeft == 0 ? nullptr : realMalloc(size); }

// malloc serves both operator new and the demangling.
TEST(RegistryErrors, WhatIsComposedOnceAndNeverThrows) {
    struct Grouping : std::numpunct<char> {
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const std::string expected =
        "Exception 'class Quend::RegistryAccess::Registry::NotFound' "
        "(Quend/RegistryAccess/Registry:1234567): m";
    long n = 1;
    for (bool failed = true; failed; ++n) {
        const Registry::NotFound error("m", 1234567);
        const Registry::NotFound copiedBefore(error);
        std::string first(expected.size(), '?');
        {
            const tests::ImportPatch patch("malloc", reinterpret_cast<void*>(&faultyMalloc));
            realMalloc = patch.original<decltype(std::malloc)>();
            allocationsLeft = n;
            first = error.what();
            failed = allocationsLeft <= 0;
        }
        EXPECT_EQ(first, failed ? "" : expected) << n;
        const char* const composed = error.what();
        const long before = tests::allocationsSoFar();
        EXPECT_EQ(error.what(), composed);
        EXPECT_EQ(tests::allocationsSoFar(), before);
        const Registry::NotFound copiedAfter(error);
        for (const auto* each : {&error, &copiedBefore, &copiedAfter}) {
            EXPECT_EQ(each->what(), expected);
        }
    }
    EXPECT_GT(n, 4) << "too few allocations failed";
}

TEST_F(RegistryTest, FailedAllocationLeavesNoKeyOpen) {
    const NotedCalls noted;
    tests::failEachAllocation([&](long, auto failing) {
        const int before = openKeys;
        failing([&] {
            journal.clear();
            for (const std::size_t i : {5U, 6U, 7U, 11U}) {
                kOperations[i].call(key);
            }
        });
        EXPECT_EQ(openKeys, before);
        return 0L;
    });
}

// Each slot's model is its name, and which open key it shares: 0 for none.
TEST_F(RegistryTest, EveryKeyIsClosedOnceOverRandomOperations) {
    struct Slot {
        std::string name;
        unsigned record;
    };
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const NotedCalls noted;
    const auto run = [&](unsigned steps) {
        std::array<Registry, 6> pool;
        std::array<Slot, 6> model{};
        for (unsigned step = 1; step <= steps && !HasFailure(); ++step) {
            const std::size_t i = random() % pool.size();
            const std::size_t j = random() % pool.size();
            const bool isBound = model[j].record != 0;
            journal.clear();
            switch (random() % 5) {
                case 0:
                    pool[i] = step % 4 == 0   ? Registry(HKEY_CURRENT_USER, path)
                              : step % 4 == 1 ? key.openSubKey(R"(b\c)")
                              : step % 4 == 2 ? key.createSubKey("a")
                                              : key.getSubKeys().at(1);
                    model[i] = {std::array{pid.c_str(), "b\\c", "a", "b"}[step % 4], step};
                    break;
                case 1:
                    pool[i] = pool[j];
                    model[i] = model[j];
                    break;
                case 2:
                    pool[i] = std::move(pool[j]);
                    model[i] = std::exchange(model[j], i == j ? model[j] : Slot{});
                    break;
                case 3:
                    EXPECT_EQ(outcome([](auto& k) { k.openSubKey("missing"); }, pool[j]),
                              isBound ? kOpen.other : kUnbound);
                    break;
                default:  // an empty path opens nothing
                    pool[i] = isBound ? pool[j].openSubKey("") : Registry();
                    model[i] = {"", model[j].record};
                    openKeys -= isBound ? 1 : 0;
            }
            std::set<unsigned> records = {0};
            for (std::size_t slot = 0; slot < pool.size(); ++slot) {
                EXPECT_EQ(pool[slot].getName(), model[slot].name);
                EXPECT_EQ(outcome([](auto& k) { k.hasValue(""); }, pool[slot]),
                          model[slot].record != 0 ? "" : kUnbound);
                records.insert(model[slot].record);
            }
            EXPECT_EQ(openKeys, static_cast<int>(records.size()) - 1);
        }
    };
    run(100);  // what opens handles once, has
    const std::size_t handlesBefore = tests::handleCount();
    run(10'000);
    EXPECT_EQ(openKeys, 0);
    EXPECT_EQ(tests::handleCount(), handlesBefore);
}

// A key that the platform refuses to list is refused by both.
TEST(RegistryListing, IsThePlatformsOwn) {
    std::vector<std::string> paths = {"Software"};
    for (std::size_t i = 0; i < paths.size() && !HasFailure(); ++i) {
        const std::string path = paths[i];
        HKEY handle = nullptr;
        EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &handle), 0);
        std::string expected;
        std::array<char, 256> name{};
        LSTATUS code = 0;
        for (DWORD n = 0; (code = RegEnumKeyA(handle, n, name.data(), name.size())) == 0; ++n) {
            (expected += name.data()) += '\n';
        }
        RegCloseKey(handle);
        std::vector<Registry> subKeys;
        EXPECT_EQ(
            outcome([&](auto& k) { subKeys = k.getSubKeys(); }, Registry(HKEY_LOCAL_MACHINE, path)),
            code == ERROR_NO_MORE_ITEMS ? "" : kList.other);
        std::string names;
        for (const Registry& subKey : subKeys) {
            (names += subKey.getName()) += '\n';
            paths.push_back(path + '\\' + subKey.getName());
        }
        EXPECT_EQ(names, expected) << path;
    }
    std::cout << paths.size() << " keys\n";
    EXPECT_GT(paths.size(), 1000U);
}

}  // namespace
