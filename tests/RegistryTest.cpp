#include <shlwapi.h>

#include <regex>
#include <span>

#include "Quend/RegistryAccess/Registry.h"
#include "Quend/RegistryAccess/RegistryErrors.h"
#include "support/Allocations.h"
#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"
#include "support/Test.h"

namespace {

using Quend::RegistryAccess::Registry;
using Quend::RegistryAccess::textValueSize;
using Error = Registry::GenericRegistryError;

static_assert(!std::is_base_of_v<std::exception, Error>);
static_assert(sizeof(Registry) == sizeof(std::string) + sizeof(void*));

std::vector<char> chars(const std::string& text) { return {text.begin(), text.end()}; }

// Each test has a key of its own, gone when it ends.
struct RegistryTest : testing::Test {
    RegistryTest() {
        SHDeleteKeyA(HKEY_CURRENT_USER, path.c_str());  // left by a killed test of this process id
        key = Registry(HKEY_CURRENT_USER, "Software").createSubKey(leaf);
    }
    ~RegistryTest() override {
        std::setlocale(LC_CTYPE, "C");
        SHDeleteKeyA(HKEY_CURRENT_USER, path.c_str());
    }

    // Writes a value as it is. A terminator would be added to a text that has none behind it.
    void setRaw(const std::wstring& name, DWORD type, const std::string& data) const {
        const std::string behind = data + "??";
        RegSetKeyValueW(HKEY_CURRENT_USER, widePath.c_str(), name.c_str(), type, behind.c_str(),
                        static_cast<DWORD>(data.size()));
    }

    const std::string leaf = "QuendFrameworkTest" + std::to_string(GetCurrentProcessId());
    const std::string path = "Software\\" + leaf;
    const std::wstring widePath{path.begin(), path.end()};
    Registry key;
};

TEST_F(RegistryTest, KeepsTheSettingsOfAnEditor) {
    const Registry editor = key.createSubKey("Editor");
    editor.setIntValue("FontSize", 11);
    editor.setIntValue("FontSize", 12);
    editor.setStringValue("Theme", chars("dark"));
    EXPECT_TRUE(editor.hasValue("FontSize"));
    EXPECT_EQ(editor.getIntValue("FontSize"), 12);
    EXPECT_EQ(editor.getStringValue("Theme"), chars("dark"));

    // One key below another. The name is the path that was given.
    EXPECT_EQ(editor.createSubKey(R"(Windows\Main)").getName(), R"(Windows\Main)");
    editor.openSubKey(R"(Windows\Main)").setIntValue("Width", 1024);
    editor.createSubKey("Recent");
    const std::vector<Registry> subKeys = editor.getSubKeys();
    ASSERT_EQ(subKeys.size(), 2U);
    EXPECT_EQ(subKeys[0].getName(), "Recent");
    EXPECT_EQ(subKeys[1].getName(), "Windows");
    EXPECT_TRUE(subKeys[0].getSubKeys().empty());

    // What another program sees. Here the name is the last part of the path.
    const Registry seen(HKEY_CURRENT_USER, path + R"(\Editor\Windows\Main)");
    EXPECT_EQ(seen.getName(), "Main");
    EXPECT_EQ(seen.getIntValue("Width"), 1024);

    editor.deleteValue("Theme");
    EXPECT_FALSE(editor.hasValue("Theme"));
    EXPECT_THROW(editor.getStringValue("Theme"), Registry::NotFound);
    key.deleteSubKey("Editor");
    EXPECT_THROW(key.openSubKey("Editor"), Registry::OpenError);
}

TEST_F(RegistryTest, FindsNamesAsWindowsDoesButForGetStringValue) {
    key.setStringValue("Theme", chars("dark"));
    EXPECT_TRUE(key.hasValue("THEME"));
    EXPECT_THROW(key.getStringValue("THEME"), Registry::NotFound);
    EXPECT_THROW(key.getStringValue("Them"), Registry::NotFound);
    EXPECT_THROW(key.getStringValue("Themes"), Registry::NotFound);
    key.setIntValue("", 0x80000001);  // the value without a name
    EXPECT_EQ(key.getIntValue(""), std::int32_t(0x80000001));
    EXPECT_EQ(Registry(HKEY_CURRENT_USER, "Software").getName(), "Software");
    EXPECT_EQ(Registry(HKEY_CURRENT_USER, R"(Software\)").getName(), "");
}

// what() of the error that `call` throws; empty if it throws nothing.
std::string whatOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

// The same, shortened to "Class: message" if it has the form that all have.
std::string errorOf(const std::function<void()>& call) {
    const std::regex form(R"(Exception 'class Quend::RegistryAccess::Registry::(\w+)' )"
                          R"(\(Quend/RegistryAccess/Registry:[1-9]\d*\): )");
    return std::regex_replace(whatOf(call), form, "$1: ");
}

// What each operation makes of the codes of the one platform function that it calls.
const struct Operation {
    const char* function{};
    void (*call)(const Registry& key){};
    const char* onAccessDenied{};
    const char* onOthers{};
    const char* onNoMoreItems = onOthers;
} kOperations[] = {
    {.function = "RegOpenKeyW",
     .call = [](const Registry& /*key*/) { Registry(HKEY_CURRENT_USER, "Software"); },
     .onAccessDenied = "AccessDenied: Unable to open requested key",
     .onOthers = "OpenError: Unable to open requested key"},
    {.function = "RegOpenKeyW",
     .call = [](const Registry& key) { key.openSubKey("a"); },
     .onAccessDenied = "AccessDenied: Not enough permissions to read requested key.",
     .onOthers = "OpenError: Unable to open requested key."},
    {.function = "RegCreateKeyW",
     .call = [](const Registry& key) { key.createSubKey("a"); },
     .onAccessDenied = "AccessDenied: Not enough permissions to create requested key.",
     .onOthers = "CreationError: Unable to create requested key."},
    {.function = "SHDeleteKeyW",
     .call = [](const Registry& key) { key.deleteSubKey("a"); },
     .onAccessDenied = "AccessDenied: Not enough permissions to delete sub key.",
     .onOthers = "NotFound: Unable to delete given key."},
    {.function = "RegEnumKeyW",
     .call = [](const Registry& key) { key.getSubKeys(); },
     .onAccessDenied = "AccessDenied: Not enough permissions to read sub key enumeration.",
     .onOthers = "OpenError: Unable to open enumerated sub key.",
     .onNoMoreItems = ""},
    {.function = "RegQueryValueExW",
     .call = [](const Registry& key) { key.getIntValue("a"); },
     .onAccessDenied = "AccessDenied: Not enough permissions to read value.",
     .onOthers = "OpenError: Unable to open requested value.",
     .onNoMoreItems = "NotFound: The requested value was not found."},
    {.function = "RegEnumValueW",
     .call = [](const Registry& key) { key.getStringValue("a"); },
     .onAccessDenied = "AccessDenied: Not enough permissions to read value.",
     .onOthers = "OpenError: Unable to open requested value.",
     .onNoMoreItems = "NotFound: The requested value was not found."},
    {.function = "RegSetValueExW",
     .call = [](const Registry& key) { key.setIntValue("a", 1); },
     .onAccessDenied = "AccessDenied: Not enough permissions to modify value.",
     .onOthers = "OpenError: Unable to open requested value.",
     .onNoMoreItems = "NotFound: The value to update was not found."},
    {.function = "RegSetValueExW",
     .call = [](const Registry& key) { key.setStringValue("a", {'b'}); },
     .onAccessDenied = "AccessDenied: Not enough permissions to modify value.",
     .onOthers = "OpenError: Unable to open requested value.",
     .onNoMoreItems = "NotFound: The value to update was not found."},
    {.function = "RegDeleteValueW",
     .call = [](const Registry& key) { key.deleteValue("a"); },
     .onAccessDenied = "AccessDenied: Not enough permissions to delete value.",
     .onOthers = "NotFound: Unable to delete given value."},
};

// Stands in for any function of Windows.
LSTATUS refusal = ERROR_SUCCESS;
LSTATUS refuse() { return refusal; }
void* const kRefuse = reinterpret_cast<void*>(&refuse);

TEST_F(RegistryTest, RefusalsBecomeErrorsAndLeaveNothingBehind) {
    errorOf([] {});  // MSVC's runtime keeps a block of the first regular expression
    std::set<std::string> texts;
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.onAccessDenied);
        const tests::ImportPatch patch(operation.function, kRefuse);
        const struct {
            LSTATUS code;
            const char* error;
        } cases[] = {
            {.code = ERROR_NO_MORE_ITEMS, .error = operation.onNoMoreItems},
            {.code = ERROR_FILE_NOT_FOUND, .error = operation.onOthers},
            {.code = -1, .error = operation.onOthers},
            {.code = ERROR_ACCESS_DENIED, .error = operation.onAccessDenied},
        };
        for (const auto& each : cases) {
            refusal = each.code;
            const long blocksBefore = tests::liveBlocks;
            EXPECT_EQ(errorOf([&] { operation.call(key); }), each.error) << each.code;
            EXPECT_EQ(tests::liveBlocks, blocksBefore) << each.code;
        }
        texts.insert(whatOf([&] { operation.call(key); }));
    }
    // Each names the line of its own check, also where the messages are equal.
    EXPECT_EQ(texts.size(), std::size(kOperations));
}

TEST_F(RegistryTest, WhatMayNotBeReadIsAbsentAsAValueButNoSubKey) {
    key.setIntValue("secret", 1);
    key.createSubKey("private");
    const tests::ImportPatch patches[] = {{"RegQueryValueExW", kRefuse}, {"RegOpenKeyW", kRefuse}};
    refusal = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(key.hasValue("secret"));
    EXPECT_EQ(errorOf([&] { key.getSubKeys(); }),
              "AccessDenied: Not enough permissions to read requested key.");
}

constexpr const char* kUnbound = "NotInitialized: handle_ != 0: Invalid handle state.";

TEST_F(RegistryTest, AnUnboundObjectHasNoNameAndRefusesTheRest) {
    const Registry unbound;
    EXPECT_EQ(unbound.getName(), "");
    EXPECT_EQ(errorOf([&] { unbound.hasValue("a"); }), kUnbound);
    for (const Operation& operation :
         std::span(kOperations).subspan(1)) {  // behind the constructor
        EXPECT_EQ(errorOf([&] { operation.call(unbound); }), kUnbound);
    }
}

TEST_F(RegistryTest, RefusesANameThatIsNoText) {
    std::setlocale(LC_CTYPE, ".932");
    const std::string broken = "\x82";  // half a character of Shift-JIS
    EXPECT_THROW(Registry(HKEY_CURRENT_USER, broken), std::length_error);
    EXPECT_THROW(key.openSubKey(broken), std::length_error);
    EXPECT_THROW(key.getIntValue(broken), std::length_error);
    EXPECT_THROW(key.setStringValue(broken, {}), std::length_error);
    EXPECT_THROW(key.setStringValue("a", chars(broken)), std::length_error);
}

TEST_F(RegistryTest, ReadsANumberOfUpToFourBytes) {
    setRaw(L"value", REG_DWORD, "abcd");
    EXPECT_EQ(key.getIntValue("value"), 0x64636261);
    setRaw(L"value", REG_DWORD, "ab");
    EXPECT_EQ(key.getIntValue("value"), 0x6261);
    setRaw(L"value", REG_DWORD, "abcde");
    EXPECT_EQ(errorOf([&] { key.getIntValue("value"); }),
              "OpenError: Unable to open requested value.");
    setRaw(L"value", REG_SZ, "abcd");
    EXPECT_EQ(errorOf([&] { key.getIntValue("value"); }),
              "OpenError: type == REG_DWORD: Only REG_DWORD value types are supported in "
              "getIntValue function.");
}

// A longer value is listed before it, so that stale data would show.
TEST_F(RegistryTest, ReadsATextOfUpTo261Bytes) {
    setRaw(L"a", REG_BINARY, std::string(261, '?'));
    std::string data;
    for (std::size_t size = 0; size <= 261; ++size) {
        setRaw(L"b", REG_SZ, data);
        EXPECT_EQ(key.getStringValue("b"), std::vector<char>((size + 1) / 2, 'x')) << size;
        data += size % 2 == 0 ? 'x' : '\0';
    }
    setRaw(L"b", REG_SZ, data);
    EXPECT_EQ(errorOf([&] { key.getStringValue("b"); }),
              "OpenError: Unable to open requested value.");

    // Windows adds a terminator of two bytes to a text that has none.
    key.setStringValue("b", std::vector<char>(129, 'x'));
    EXPECT_EQ(key.getStringValue("b"), std::vector<char>(129, 'x'));
    key.setStringValue("b", std::vector<char>(131, 'x'));
    EXPECT_THROW(key.getStringValue("b"), Registry::OpenError);
}

TEST_F(RegistryTest, ReadsATextOfAnyTypeUpToItsFirstTerminator) {
    setRaw(L"value", REG_DWORD, {"x\0y\0\0\0z\0", 8});
    EXPECT_EQ(key.getStringValue("value"), chars("xy"));
    setRaw(L"value", REG_BINARY, "ab");  // U+6261, which the C locale cannot represent
    EXPECT_EQ(key.getStringValue("value"), std::vector{'\0'});
}

TEST_F(RegistryTest, ListsNamesOfUpTo260Units) {
    key.setStringValue("b", chars("text"));
    setRaw(std::wstring(260, L'a'), REG_DWORD, "");
    EXPECT_EQ(key.getStringValue("b"), chars("text"));
    setRaw(std::wstring(261, L'a'), REG_DWORD, "");
    EXPECT_EQ(errorOf([&] { key.getStringValue("b"); }),
              "OpenError: Unable to open requested value.");
    EXPECT_EQ(key.getIntValue(std::string(261, 'a')), 0);  // a query has no such limit
}

TEST_F(RegistryTest, WritesTwoBytesForEachByteOfText) {
    std::setlocale(LC_CTYPE, ".932");
    DWORD writtenType = 0;
    std::wstring written;
    const tests::Hook set(
        "RegSetValueExW", RegSetValueExW,
        [&](auto, HKEY, auto* /*name*/, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
            EXPECT_EQ(reserved, 0U) << "Wine does not look at it";
            writtenType = type;
            written.assign(reinterpret_cast<const wchar_t*>(data), size / 2);
            return LSTATUS{ERROR_SUCCESS};
        });
    key.setStringValue("v", chars("dark"));
    EXPECT_EQ(written, L"dark");
    EXPECT_EQ(writtenType, DWORD{REG_SZ});
    key.setStringValue("v", chars("\x82\xa0\x82\xa2"));
    EXPECT_EQ(written, std::wstring(L"\x3042\x3044\0\0", 4));
    key.setStringValue("v", chars(std::string("a\0", 2) + std::string(300, 'y')));
    EXPECT_EQ(written, L'a' + std::wstring(301, L'\0'));
    key.setIntValue("v", 0x30443042);
    EXPECT_EQ(writtenType, DWORD{REG_DWORD});
    EXPECT_EQ(written, L"\x3042\x3044");

    EXPECT_EQ(textValueSize(0x7fffffff), 0xfffffffeU);
    EXPECT_THROW(textValueSize(0x80000000), std::length_error);
}

TEST_F(RegistryTest, ListsSubKeysByTheirNames) {
    std::set<std::string> names = {"b", "B2", "c\xe9\xff", std::string(255, 'n')};
    for (const std::string& name : names) {
        key.createSubKey(name).setIntValue(name, 1);
    }
    // A name that the C locale cannot represent opens as an empty path does: as the parent.
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

    // In Shift-JIS the name has four bytes and is cut off after two: that is one whole character.
    std::setlocale(LC_CTYPE, ".932");
    EXPECT_THROW(key.getSubKeys(), Registry::OpenError);
    // A name of one such character is cut off inside it.
    key.createSubKey("\x82\xa0");
    EXPECT_THROW(key.getSubKeys(), std::length_error);
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
    key.createSubKey(R"(a\b)");
    tests::failEachAllocation([&](long, auto fail) {
        const std::size_t before = tests::handleCount();
        fail([&] {
            const Registry opened(HKEY_CURRENT_USER, path);
            key.openSubKey(R"(a\b)");
            key.createSubKey("a");
            key.getSubKeys();
        });
        EXPECT_EQ(tests::handleCount(), before);
    });
}

// A key that is closed too early, or twice, refuses to set a value; one that is left open counts.
TEST_F(RegistryTest, EachKeyIsClosedWithItsLastObject) {
    key.createSubKey("a");
    const std::function<Registry()> waysToOpen[] = {
        [&] { return Registry(HKEY_CURRENT_USER, path); },
        [&] { return key.openSubKey("a"); },
        [&] { return key.createSubKey("a"); },
        [&] { return key.getSubKeys().at(0); },
    };
    const std::size_t before = tests::handleCount();
    for (const auto& open : waysToOpen) {
        Registry first = open();
        const std::string name = first.getName();
        const Registry same = first.openSubKey("");  // an empty path opens nothing
        EXPECT_EQ(same.getName(), "");

        Registry second = std::move(first);
        first = second;
        Registry* const self = &second;
        second = *self;
        second = std::move(*self);
        EXPECT_EQ(second.getName(), name);
        const Registry third = std::move(*self);
        EXPECT_EQ(second.getName(), "");
        EXPECT_EQ(errorOf([&] { second.setIntValue("open", 1); }), kUnbound);

        {
            const std::vector<Registry> copies(70'000, third);  // more than 16 bits count
        }
        third.setIntValue("open", 1);
        first = Registry();
        same.setIntValue("open", 1);
    }
    EXPECT_EQ(tests::handleCount(), before);
}

}  // namespace
