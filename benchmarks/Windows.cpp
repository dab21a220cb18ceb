// What needs Windows, against the same calls of the platform made by hand. Prints one line for
// each repetition of each case, "group/subject<TAB>nanoseconds"; the repetitions of all cases
// take turns. Run in the folder of the DLLs.
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Quend/RegistryAccess/Registry.h"
#include "command/CommandRunner.h"
#include "properties/TextConversion.h"

namespace {

using Quend::RegistryAccess::Registry;

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::exit(1);
    }
}

struct Case {
    const char* name;
    int calls;  // in one repetition
    std::function<void()> body;
    int operations = 1;  // in one call
};

void* volatile kept;
constexpr int kAllocations = 10'000;

// Blocks of 32 bytes. The function is called by its address on both sides, as a client does it
// with any DLL.
std::function<void()> allocateWith(void* allocate, void* deallocate) {
    return [allocate = reinterpret_cast<void* (*)(unsigned long long)>(allocate),
            deallocate = reinterpret_cast<void (*)(void*)>(deallocate)] {
        for (int i = 0; i < kAllocations; ++i) {
            kept = allocate(32);
            deallocate(kept);
        }
    };
}

std::function<void()> load(const wchar_t* name) {
    return [name] {
        HMODULE const module = LoadLibraryW(name);
        require(module != nullptr, "LoadLibraryW");
        FreeLibrary(module);
    };
}

void readRaw(HKEY key) {
    DWORD value = 0;
    DWORD size = sizeof(value);
    DWORD type = 0;
    require(RegQueryValueExW(key, L"number", nullptr, &type, reinterpret_cast<BYTE*>(&value),
                             &size) == 0 &&
                type == REG_DWORD && value == 7,
            "RegQueryValueExW");
}

void setRaw(HKEY key) {
    const DWORD value = 7;
    require(RegSetValueExW(key, L"number", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                           sizeof(value)) == 0,
            "RegSetValueExW");
}

// With the names kept beside the keys, in narrow text, as the library does it.
void listRaw(HKEY key) {
    std::vector<std::pair<std::string, HKEY>> keys;
    for (DWORD i = 0;; ++i) {
        wchar_t name[261] = {};
        const LSTATUS result = RegEnumKeyW(key, i, name, 261);
        if (result == ERROR_NO_MORE_ITEMS) {
            break;
        }
        HKEY opened = nullptr;
        require(result == 0 && RegOpenKeyW(key, name, &opened) == 0, "RegEnumKeyW");
        keys.emplace_back(Quend::Framework::Text::wstringToString(name), opened);
    }
    require(keys.size() == 100, "100 sub keys");
    for (const auto& [name, opened] : keys) {
        RegCloseKey(opened);
    }
}

// The platform's steps of runCommand, one after the other in this thread.
std::string runRaw(std::string command) {
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nullptr, TRUE};
    HANDLE pipes[2][2] = {};  // standard error and output; the end to read, the end to write
    for (auto& pipe : pipes) {
        DWORD mode = PIPE_NOWAIT;
        require(CreatePipe(&pipe[0], &pipe[1], &attributes, 0) != 0 &&
                    SetHandleInformation(pipe[0], HANDLE_FLAG_INHERIT, 0) != 0 &&
                    SetNamedPipeHandleState(pipe[0], &mode, nullptr, nullptr) != 0,
                "CreatePipe");
    }
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = pipes[1][1];
    startup.hStdError = pipes[0][1];
    char application[4096] = {};
    GetSystemDirectoryA(application, sizeof(application));
    command.insert(0, "/c ");
    PROCESS_INFORMATION process = {};
    require(
        CreateProcessA((application + std::string("\\cmd.exe")).c_str(), command.data(), nullptr,
                       nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr, &startup, &process) != 0,
        "CreateProcessA");
    CloseHandle(pipes[0][1]);
    CloseHandle(pipes[1][1]);
    std::string output;
    for (;;) {
        char buffer[128];
        DWORD count = 0;
        if (ReadFile(pipes[1][0], buffer, sizeof(buffer), &count, nullptr) == 0 && count == 0 &&
            GetLastError() == ERROR_BROKEN_PIPE) {
            break;
        }
        output.append(buffer, count);
    }
    std::erase(output, '\r');
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    CloseHandle(pipes[0][0]);
    CloseHandle(pipes[1][0]);
    return output;
}

}  // namespace

void measure(const std::vector<Case>& cases, int repetitions) {
    for (int i = -1; i < repetitions; ++i) {  // the first is to get warm
        for (const Case& each : cases) {
            const auto start = std::chrono::steady_clock::now();
            for (int call = 0; call < each.calls; ++call) {
                each.body();
            }
            const std::chrono::duration<double, std::nano> taken =
                std::chrono::steady_clock::now() - start;
            if (i >= 0) {
                std::printf("%s\t%.1f\n", each.name, taken.count() / each.calls / each.operations);
            }
        }
    }
}

int main(int argc, char** argv) {
    const int repetitions = argc > 1 ? std::atoi(argv[1]) : 15;

    // While nothing else holds the library, but what it imports is there already.
    measure({{"load/ours", 10, load(L"Quend_Framework_1.1.12.dll")},
             {"load/bare", 10, load(L"EmptyLibrary.dll")}},
            repetitions);

    HMODULE const library = LoadLibraryW(L"Quend_Framework_1.1.12.dll");
    HMODULE const runtime = LoadLibraryW(L"msvcrt.dll");
    require(library != nullptr && runtime != nullptr, "LoadLibraryW");
    const auto function = [](HMODULE module, const char* name) {
        void* const address = reinterpret_cast<void*>(GetProcAddress(module, name));
        require(address != nullptr, name);
        return address;
    };
    const std::string scope = "_ZN5Quend9Framework10Management13MemoryManager";
    const auto allocateOurs = allocateWith(function(library, (scope + "8allocateEy").c_str()),
                                           function(library, (scope + "10deallocateEPv").c_str()));
    const auto allocateBare = allocateWith(function(runtime, "malloc"), function(runtime, "free"));

    HKEY parent = nullptr;
    require(RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\QuendBenchmark", &parent) == 0,
            "RegCreateKeyW");
    setRaw(parent);
    for (int i = 0; i < 100; ++i) {
        HKEY key = nullptr;
        RegCreateKeyW(parent, (L"SubKey" + std::to_wstring(i)).c_str(), &key);
        RegCloseKey(key);
    }
    const Registry registry(HKEY_CURRENT_USER, "Software\\QuendBenchmark");

    {
        FILE* const file = std::fopen("output.txt", "wb");
        require(file != nullptr, "output.txt");
        for (int i = 0; i < 1024 * 1024 / 64; ++i) {
            std::fputs("0123456789012345678901234567890123456789012345678901234567890\r\n", file);
            std::fputc(' ', file);
        }
        std::fclose(file);
    }
    const auto requireOutput = [](const std::string& output) {
        require(output.size() == 1'032'192, "1 MB of output");
    };

    const std::vector<Case> cases = {
        {"allocate/ours", 20, allocateOurs, kAllocations},
        {"allocate/bare", 20, allocateBare, kAllocations},
        {"registry read/ours", 300,
         [&] { require(registry.getIntValue("number") == 7, "getIntValue"); }},
        {"registry read/bare", 300, [&] { readRaw(parent); }},
        {"registry set/ours", 300, [&] { registry.setIntValue("number", 7); }},
        {"registry set/bare", 300, [&] { setRaw(parent); }},
        {"registry list/ours", 3,
         [&] { require(registry.getSubKeys().size() == 100, "getSubKeys"); }},
        {"registry list/bare", 3, [&] { listRaw(parent); }},
        {"runCommand/ours", 1,
         [&] {
             requireOutput(std::get<1>(Quend::Framework::Command::runCommand("type output.txt")));
         }},
        {"runCommand/bare", 1, [&] { requireOutput(runRaw("type output.txt")); }},
    };
    measure(cases, repetitions);
    std::remove("output.txt");
    Registry(HKEY_CURRENT_USER, "Software").deleteSubKey("QuendBenchmark");
    RegCloseKey(parent);
}
