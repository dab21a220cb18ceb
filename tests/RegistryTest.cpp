#include "support/Test.h"

#include <shlwapi.h>

#include <bitset>
#include <regex>

#include "Quend/RegistryAccess/Registry.h"
#include "Quend/RegistryAccess/RegistryErrors.h"
#include "support/Allocations.h"
#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"

namespace {

using Quend::RegistryAccess::Registry;
using Quend::RegistryAccess::textValueSize;
using Error = Registry::GenericRegistryError;

static_assert(!std::is_base_of_v<std::exception, Error>);
static_assert(sizeof(Registry) == sizeof(std::string) + sizeof(void*));

std::vector<char> chars(const std::string& text) { return {text.begin(), text.end()}; }

std::bitset<1000> linesOfErrors;  // allocates nothing

// "Class: message" of what `call` throws, or "" if nothing. what() has the usual form.
std::string outcome(const std::function<void()>& call) {
    try {
        call();
    } catch (const Error& error) {
        static const std::regex form(R"(Exception 'class Quend::RegistryAccess::Registry::(\w+)' )"
                                     R"(\(Quend/RegistryAccess/Registry:([1-9]\d*)\)(: .*))");
        std::cmatch parts;
        EXPECT_TRUE(std::regex_match(error.what(), parts, form)) << error.what();
        linesOfErrors.set(std::stoul(parts.str(2)));
        return parts.str(1) + parts.str(3);
    }
    return "";
}

// Each test has a key of its own with two values and two sub keys, gone when it ends.
struct RegistryTest : testing::Test {
    RegistryTest() {
        SHDeleteKeyA(HKEY_CURRENT_USER, path.c_str());  // left by a killed test of this process id
        key = Registry(HKEY_CURRENT_USER, "").createSubKey(path);
        key.setIntValue("number", 0x80000001);
        key.setStringValue("text", chars("some"));
        key.createSubKey("a");
        key.createSubKey(R"(b\c)");
    }
    ~RegistryTest() override {
        std::setlocale(LC_CTYPE, "C");
        SHDeleteKeyA(HKEY_CURRENT_USER, path.c_str());
    }

    void setRaw(const std::wstring& name, DWORD type, const std::string& data) const {
        const std::string behind = data + "??";  // no NUL, or the platform would count it in
        RegSetKeyValueW(HKEY_CURRENT_USER, widePath.c_str(), name.c_str(), type, behind.c_str(),
                        static_cast<DWORD>(data.size()));
    }

    const std::string leaf = "QuendFrameworkTest" + std::to_string(GetCurrentProcessId());
    const std::string path = "Software\\" + leaf;
    const std::wstring widePath{path.begin(), path.end()};
    Registry key;
    const std::function<Registry()> waysToOpen[4] = {
        [&] { return Registry(HKEY_CURRENT_USER, path); },
        [&] { return key.openSubKey(R"(b\c)"); },
        [&] { return key.createSubKey("a"); },
        [&] { return key.getSubKeys().at(1); },
    };
};

// What becomes of the code 5, of all that are not listed, and of 259.
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

const struct Operation {
    const char* function{};  // the one that Windows refuses
    void (*call)(const Registry& key, const std::string& name){};
    Outcomes outcomes{};
    const char* onUnbound = kUnbound;
    bool hasName = true;
} kOperations[] = {
    {"RegQueryValueExW", [](auto& k, auto& n) { EXPECT_FALSE(k.hasValue(n)); }, {"", ""}},
    {"RegQueryValueExW", [](auto& k, auto& n) { k.getIntValue(n); }, kRead},
    {"RegEnumValueW", [](auto& k, auto& n) { k.getStringValue(n); }, kRead},
    {"RegSetValueExW", [](auto& k, auto& n) { k.setStringValue(n, {}); }, kWrite},
    {"RegSetValueExW", [](auto& k, auto& n) { k.setStringValue("", chars(n)); }, kWrite},
    {"RegSetValueExW", [](auto& k, auto& n) { k.setIntValue(n, 1); }, kWrite},
    {"RegOpenKeyW", [](auto& k, auto& n) { k.openSubKey(n); }, kOpen},
    {"RegCreateKeyW", [](auto& k, auto& n) { k.createSubKey(n); }, kCreate},
    {"RegDeleteValueW", [](auto& k, auto& n) { k.deleteValue(n); }, kDelete},
    {"SHDeleteKeyW", [](auto& k, auto& n) { k.deleteSubKey(n); }, kDeleteKey},
    {"RegEnumKeyW", [](auto& k, auto&) { k.getSubKeys(); }, kList, kUnbound, false},
    {"RegOpenKeyW", [](auto& k, auto&) { k.getSubKeys(); }, kOpen, kUnbound, false},
    {"RegOpenKeyW", [](auto&, auto& n) { Registry(HKEY_CURRENT_USER, n); }, kConstruct, ""},
};

LSTATUS injectedCode = 0;
LSTATUS refuse() {
    EXPECT_NE(injectedCode, 0) << "Windows was asked with a name that is not valid";
    return injectedCode;
}

TEST_F(RegistryTest, RefusalsBecomeExceptionsAndLeaveNothingBehind) {
    std::setlocale(LC_CTYPE, ".932");  // in Shift-JIS "\x82" alone is no valid text
    linesOfErrors.reset();
    for (const Operation& each : kOperations) {
        SCOPED_TRACE(each.function);
        EXPECT_EQ(outcome([&] { each.call(Registry(), "Software"); }), each.onUnbound);
        const tests::ImportPatch patch(each.function, reinterpret_cast<void*>(&refuse));
        const std::pair<LSTATUS, const char*> cases[] = {
            {ERROR_ACCESS_DENIED, each.outcomes.denied},
            {ERROR_NO_MORE_ITEMS, each.outcomes.noMore},
            {ERROR_FILE_NOT_FOUND, each.outcomes.other},
            {-1, each.outcomes.other},
        };
        for (const auto& [code, expected] : cases) {
            injectedCode = code;
            const long before = tests::liveBlocks;
            EXPECT_EQ(outcome([&] { each.call(key, "a"); }), expected) << code;
            EXPECT_EQ(tests::liveBlocks, before) << code;
        }
        injectedCode = 0;
        if (each.hasName) {
            EXPECT_THROW(each.call(key, "\x82"), std::length_error);
        }
    }
    // Ten checks for an unbound object, ten of a result code, and CreationError's own.
    EXPECT_EQ(linesOfErrors.count(), 21U);
}

TEST_F(RegistryTest, ReadsWhatItWroteAndNothingThatItDeleted) {
    EXPECT_EQ(key.getIntValue("NUMBER"), std::int32_t(0x80000001));
    EXPECT_EQ(key.getStringValue("text"), chars("some"));
    EXPECT_TRUE(key.hasValue("TEXT"));
    for (const char* const name : {"missing", "Text", "tex"}) {
        EXPECT_EQ(outcome([&] { key.getStringValue(name); }), kRead.noMore) << name;
    }
    key.deleteValue("text");
    EXPECT_FALSE(key.hasValue("text"));
    key.setStringValue("", {});  // the unnamed value
    EXPECT_EQ(key.getStringValue(""), chars(""));
    EXPECT_EQ(key.createSubKey(R"(x\y\)").getName(), R"(x\y\)");
    EXPECT_EQ(key.openSubKey(R"(b\c)").getSubKeys().size(), 0U);
    key.deleteSubKey("b");
    EXPECT_EQ(key.getSubKeys().at(1).getName(), "x");
    EXPECT_EQ(Registry(HKEY_CURRENT_USER, path + '\\').getName(), "");
    EXPECT_EQ(Registry(HKEY_CURRENT_USER, path).getName(), leaf);
    EXPECT_EQ(Registry(HKEY_CURRENT_USER, "Software").getName(), "Software");
}

// A longer value comes before "b", so that stale data would show.
TEST_F(RegistryTest, ReadsAnyDataWithinItsBuffer) {
    const auto text = [&] { return key.getStringValue("b"); };
    const auto number = [&] { return key.getIntValue("b"); };
    setRaw(L"a", REG_BINARY, std::string(261, '?'));
    std::string data;
    for (std::size_t size = 0; size <= 261; ++size) {
        setRaw(L"b", REG_SZ, data);
        EXPECT_EQ(text(), std::vector<char>((size + 1) / 2, 'x')) << size;
        data += size % 2 == 0 ? 'x' : '\0';
    }
    setRaw(L"b", REG_SZ, data);
    EXPECT_EQ(outcome(text), kRead.other);
    setRaw(L"b", REG_SZ, "a");
    EXPECT_EQ(outcome(number),
              "OpenError: type == REG_DWORD: Only REG_DWORD value types are supported in "
              "getIntValue function.");
    setRaw(L"b", REG_DWORD, {"x\0\0\0y\0", 6});  // a terminator inside
    EXPECT_EQ(text(), chars("x"));
    EXPECT_EQ(outcome(number), kRead.other);
    setRaw(L"b", REG_DWORD, "ab");  // a unit that the C locale has not
    EXPECT_EQ(text(), std::vector{'\0'});
    EXPECT_EQ(number(), 0x6261);
    for (const std::size_t length : {260U, 261U}) {
        setRaw(std::wstring(length, L'a'), REG_DWORD, "");
        EXPECT_EQ(outcome(text), length == 260 ? "" : kRead.other);
    }
    EXPECT_EQ(key.getIntValue(std::string(260, 'a')), 0);  // a number of no bytes
}

TEST_F(RegistryTest, WritesTwoBytesForEachByteOfText) {
    std::setlocale(LC_CTYPE, ".932");
    std::pair<DWORD, std::wstring> written;
    const tests::Hook set(
        "RegSetValueExW", RegSetValueExW,
        [&](auto, auto, auto, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
            EXPECT_EQ(reserved, 0U) << "Wine does not look at it";
            written = {type, {reinterpret_cast<const wchar_t*>(data), size / 2}};
            return LSTATUS{0};
        });
    const std::pair<std::string, std::wstring> cases[] = {
        {"ab", L"ab"},
        {std::string("a\0", 2) + std::string(300, 'y'), L'a' + std::wstring(301, L'\0')},
        {"\x82\xa0\x82\xa2", std::wstring(L"\x3042\x3044\0\0", 4)},
    };
    for (const auto& [text, units] : cases) {
        key.setStringValue("v", chars(text));
        EXPECT_EQ(written, std::pair(DWORD{REG_SZ}, units));
    }
    key.setIntValue("v", 0x30443042);
    EXPECT_EQ(written, std::pair(DWORD{REG_DWORD}, std::wstring(L"\x3042\x3044")));

    EXPECT_EQ(textValueSize(0x7fffffff), 0xfffffffeU);
    EXPECT_THROW(textValueSize(0x80000000), std::length_error);
    EXPECT_THROW(textValueSize(SIZE_MAX), std::length_error);
}

// A name that the C locale cannot show opens as an empty path does: as the parent.
TEST_F(RegistryTest, SubKeysAreListedByTheirNames) {
    std::set<std::string> names = {"a", "b", "B2", "c\xe9\xff", "d e", std::string(255, 'n')};
    for (const std::string& name : names) {
        key.createSubKey(name).setIntValue(name, 1);
    }
    RegSetKeyValueW(HKEY_CURRENT_USER, (widePath + L"\\\x3042\x3044").c_str(), L"hidden", REG_DWORD,
                    "", 0);
    names.insert(std::string(2, '\0'));
    key.setIntValue("", 1);
    std::set<std::string> listed;
    for (const Registry& subKey : key.getSubKeys()) {
        listed.insert(subKey.getName());
        EXPECT_TRUE(subKey.hasValue(subKey.getName()));
    }
    EXPECT_EQ(listed, names);
}

TEST(RegistryErrors, WhatIsComposedOnceAndNeverThrows) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new tests::Grouping));
    const std::string expected =
        "Exception 'class Quend::RegistryAccess::Registry::NotFound' "
        "(Quend/RegistryAccess/Registry:1234567): m";
    tests::failEachAllocation([&](long, auto fail) {
        const Registry::NotFound error("m", 1234567);
        std::string first(expected.size(), '?');
        fail([&] { first = error.what(); });
        EXPECT_EQ(first, tests::AllocationFault::happened() ? "" : expected);
        // Made before or after the text is composed.
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is under test
        const Registry::NotFound copy(error);
        EXPECT_EQ(error.what(), expected);
        EXPECT_EQ(copy.what(), expected);
        tests::expectNoAllocation([&] { error.what(); });
    });
#ifndef _MSC_VER  // whose names need no demangling
    // The runtime ends the process if realloc fails at the thread's first exception.
    EXPECT_THROW(throw std::bad_alloc(), std::bad_alloc);
    const tests::Hook demangling("realloc", std::realloc, [](auto...) -> void* { return nullptr; });
    EXPECT_STREQ(Registry::NotFound("m", 1).what(), "");
#endif
    std::locale::global(before);
}

TEST_F(RegistryTest, FailedAllocationLeavesNoKeyOpen) {
    tests::failEachAllocation([&](long, auto fail) {
        const std::size_t before = tests::handleCount();
        fail([&] {
            for (const auto& open : waysToOpen) {
                open();
            }
        });
        EXPECT_EQ(tests::handleCount(), before);
    });
}

// A key that is closed too early, or twice, refuses to set a value; one that is left open counts.
TEST_F(RegistryTest, EachKeyIsClosedWithItsLastObject) {
    const std::size_t before = tests::handleCount();
    {
        const std::vector<Registry> moreThan16BitsCount(70'000, key);
    }
    for (const auto& open : waysToOpen) {
        Registry first = open();
        const std::string name = first.getName();
        const Registry same = first.openSubKey("");  // an empty path opens nothing
        Registry second = first;
        Registry* const self = &second;
        second = *self;
        second = std::move(*self);
        first = std::move(*self);
        EXPECT_EQ(second.getName(), "");
        EXPECT_EQ(outcome([&] { second.setIntValue("open", 1); }), kUnbound);
        second = first;
        first = Registry();
        EXPECT_EQ(second.getName(), name);
        EXPECT_EQ(outcome([&] { second.setIntValue("open", 1); }), "");
        second = Registry();
        EXPECT_EQ(same.getName(), "");
        EXPECT_EQ(outcome([&] { same.setIntValue("open", 1); }), "");
    }
    EXPECT_EQ(tests::handleCount(), before);
}

}  // namespace
