// Bare: the same calls of the platform. The sub keys are listed with their names in narrow text,
// as the library gives them.
#include "Quend/RegistryAccess/Registry.h"

#include <windows.h>

#include <memory>
#include <system_error>
#include <utility>

#include "Bench.h"
#include "properties/TextConversion.h"

namespace bench {
namespace {

using Quend::RegistryAccess::Registry;

void require(LSTATUS result) {
    if (result != ERROR_SUCCESS) {
        throw std::system_error(result, std::system_category());
    }
}

// A key below HKEY_CURRENT_USER with a number and sub keys, as long as this object.
struct ScratchKey {
    explicit ScratchKey(std::size_t subKeys) {
        require(RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\QuendBenchmark", &bare));
        for (std::size_t i = 0; i < subKeys; ++i) {
            HKEY key = nullptr;
            require(RegCreateKeyW(bare, (L"SubKey" + std::to_wstring(i)).c_str(), &key));
            RegCloseKey(key);
        }
        ours = Registry(HKEY_CURRENT_USER, "Software\\QuendBenchmark");
        ours.setIntValue("number", 7);
    }
    ~ScratchKey() {
        RegCloseKey(bare);
        Registry(HKEY_CURRENT_USER, "Software").deleteSubKey("QuendBenchmark");
    }
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    HKEY bare = nullptr;
    Registry ours;
};

DWORD readBare(HKEY key) {
    DWORD value = 0;
    DWORD size = sizeof(value);
    DWORD type = 0;
    require(
        RegQueryValueExW(key, L"number", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size));
    return type == REG_DWORD ? value : 0;
}

std::size_t listBare(HKEY key) {
    std::vector<std::pair<std::string, HKEY>> keys;
    for (DWORD i = 0;; ++i) {
        wchar_t name[261] = {};
        const LSTATUS result = RegEnumKeyW(key, i, name, 261);
        if (result == ERROR_NO_MORE_ITEMS) {
            break;
        }
        require(result);
        HKEY opened = nullptr;
        require(RegOpenKeyW(key, name, &opened));
        keys.emplace_back(Quend::Framework::Text::wstringToString(name), opened);
    }
    for (const auto& [name, opened] : keys) {
        RegCloseKey(opened);
    }
    return keys.size();
}

const Group registry(Mode::table, {100}, [](std::size_t subKeys) {
    const auto key = std::make_shared<ScratchKey>(subKeys);
    addCase("registry read/ours", [key] { return key->ours.getIntValue("number"); });
    addCase("registry read/bare", [key] { return readBare(key->bare); });
    addCase("registry set/ours", [key] { key->ours.setIntValue("number", 7); });
    addCase("registry set/bare", [key] {
        const DWORD value = 7;
        require(RegSetValueExW(key->bare, L"number", 0, REG_DWORD,
                               reinterpret_cast<const BYTE*>(&value), sizeof(value)));
    });
    addCase("registry list/ours", [key] { return key->ours.getSubKeys().size(); });
    addCase("registry list/bare", [key] { return listBare(key->bare); });
});

}  // namespace
}  // namespace bench
