// Registry access, commands and loading, which exist on Windows alone. Bare: the same calls of the
// platform.
#include <windows.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <system_error>
#include <utility>

#include "Bench.h"
#include "Quend/RegistryAccess/Registry.h"
#include "command/CommandRunner.h"
#include "properties/TextConversion.h"

namespace bench {
namespace {

using Quend::RegistryAccess::Registry;

void require(bool condition) {
    if (!condition) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
}

// A key below HKEY_CURRENT_USER with a number and sub keys, as long as this object.
struct ScratchKey {
    ScratchKey() {
        require(RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\QuendBenchmark", &bare) == 0);
        for (int i = 0; i < 100; ++i) {
            HKEY key = nullptr;
            require(RegCreateKeyW(bare, (L"SubKey" + std::to_wstring(i)).c_str(), &key) == 0);
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

// With names in narrow text, as the library gives them.
std::size_t listBare(HKEY key) {
    std::vector<std::pair<std::string, HKEY>> keys;
    wchar_t name[261] = {};
    for (DWORD i = 0; RegEnumKeyW(key, i, name, 261) == 0; ++i) {
        HKEY opened = nullptr;
        require(RegOpenKeyW(key, name, &opened) == 0);
        keys.emplace_back(Quend::Framework::Text::wstringToString(name), opened);
    }
    for (const auto& [narrowName, opened] : keys) {
        RegCloseKey(opened);
    }
    return keys.size();
}

const Group registry([] {
    const auto key = std::make_shared<ScratchKey>();
    addCase("registry read/ours", [key] { return key->ours.getIntValue("number"); });
    addCase("registry read/bare", [key] {
        DWORD value = 0;
        DWORD size = sizeof(value);
        DWORD type = 0;
        auto* const bytes = reinterpret_cast<BYTE*>(&value);
        require(RegQueryValueExW(key->bare, L"number", nullptr, &type, bytes, &size) == 0);
        return type == REG_DWORD ? value : 0;
    });
    addCase("registry set/ours", [key] { key->ours.setIntValue("number", 7); });
    addCase("registry set/bare", [key] {
        const DWORD value = 7;
        const auto* const bytes = reinterpret_cast<const BYTE*>(&value);
        require(RegSetValueExW(key->bare, L"number", 0, REG_DWORD, bytes, sizeof(value)) == 0);
    });
    addCase("registry list/ours", [key] { return key->ours.getSubKeys().size(); });
    addCase("registry list/bare", [key] { return listBare(key->bare); });
});

// A command that writes 64 KB.
const Group command([] {
    static constexpr const char* kCommand = "type benchmark.txt";
    static constexpr std::size_t kLines = 1024;
    std::ofstream file("benchmark.txt", std::ios::binary);
    for (std::size_t i = 0; i < kLines; ++i) {
        file << std::string(62, 'x') << "\r\n";
    }
    addCase("runCommand/ours", [] {
        const auto [started, output] = Quend::Framework::Command::runCommand(kCommand);
        require(started && output.size() == 63 * kLines);
    });
    addCase("runCommand/bare", [] {
        std::string output;
        char buffer[4096];
        FILE* const pipe = _popen(kCommand, "rt");
        require(pipe != nullptr);
        for (std::size_t size = 1; size > 0;) {
            size = std::fread(buffer, 1, sizeof(buffer), pipe);
            output.append(buffer, size);
        }
        _pclose(pipe);
        require(output.size() == 63 * kLines);
    });
});

// In a program that does not use the library but holds GCC's runtime, as every client of it does.
auto load(const wchar_t* name) {
    return [name] {
        HMODULE const module = LoadLibraryW(name);
        require(module != nullptr);
        FreeLibrary(module);
    };
}

const Group loading([] {
    addCase("load/ours", load(L"" QUEND_LIBRARY));
    addCase("load/bare", load(L"EmptyLibrary.dll"));
});

}  // namespace
}  // namespace bench
