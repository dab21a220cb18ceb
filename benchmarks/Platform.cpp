// Registry access, commands and loading, which exist on Windows alone.
#include <windows.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <system_error>

#include "Bench.h"
#include "Quend/RegistryAccess/Registry.h"
#include "command/CommandRunner.h"

namespace bench {
namespace {

using Quend::RegistryAccess::Registry;

void require(bool condition) {
    if (!condition) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
}

// A key below HKEY_CURRENT_USER with a number, as long as this object.
struct ScratchKey {
    ScratchKey() {
        require(RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\QuendBenchmark", &bare) == 0);
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
        // NOLINTNEXTLINE(bugprone-command-processor): which is what is measured
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
    addCase("load/bare", load(L"BareLibrary.dll"));
});

}  // namespace
}  // namespace bench
