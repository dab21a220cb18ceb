// Loads modules at run time, lets them work together through the library, and unloads them.
//   host TEXTFILE SETTINGSFILE
#include <Quend/Framework/MemoryManager.h>

#include <windows.h>

#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Module.h"
#include "SharedText.h"

using Quend::Framework::Management::MemoryManager::findObject;

namespace {

template <typename Function>
Function* exportOf(HMODULE module, const char* name) {
    const FARPROC address = GetProcAddress(module, name);
    Function* function = nullptr;
    static_assert(sizeof(function) == sizeof(address));
    std::memcpy(&function, &address, sizeof(function));
    return function;
}

// A module that is started, and stopped and unloaded with this object.
class RunningModule {
 public:
    explicit RunningModule(std::string file) : name(std::move(file)) {}
    ~RunningModule() {
        if (isStarted) {
            std::cout << "host: stopping and unloading " << name << '\n';
            exportOf<StopModule>(module, "stopModule")();
        }
        if (module != nullptr) {
            FreeLibrary(module);
        }
    }
    RunningModule(const RunningModule&) = delete;
    RunningModule& operator=(const RunningModule&) = delete;

    bool start(const char* textFile, const char* settingsFile) {
        std::cout << "\nhost: loading " << name << '\n';
        module = LoadLibraryA(name.c_str());
        auto* const startModule =
            module == nullptr ? nullptr : exportOf<StartModule>(module, "startModule");
        if (startModule == nullptr) {
            std::cerr << "host: " << name << " cannot be loaded, error " << GetLastError() << '\n';
            return false;
        }
        isStarted = startModule(textFile, settingsFile);
        return isStarted;
    }

 private:
    std::string name;
    HMODULE module = nullptr;
    bool isStarted = false;
};

bool run(const char* textFile, const char* settingsFile) {
    std::vector<std::unique_ptr<RunningModule>> modules;
    for (const char* const file : {"Settings.dll", "Reader.dll", "Counter.dll", "Reporter.dll"}) {
        modules.push_back(std::make_unique<RunningModule>(file));
        if (!modules.back()->start(textFile, settingsFile)) {
            std::cout << "\nhost: stopping what was started\n";
            while (!modules.empty()) {
                modules.pop_back();
            }
            return false;
        }
    }
    std::cout << '\n';
    modules[2].reset();
    modules[1].reset();
    std::cout << "host: the reader is gone, the shared text is "
              << (findObject(kSharedTextName) != nullptr ? "still there" : "gone as well")
              << "\n\n";
    modules[3].reset();
    modules[0].reset();
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: host TEXTFILE SETTINGSFILE\n";
        return 2;
    }
    const bool isDone = run(argv[1], argv[2]);
    const bool isGone = findObject(kSharedTextName) == nullptr;
    std::cout << (isGone ? "host: every reference was given back\n"
                         : "host: somebody kept a reference\n");
    return isDone && isGone ? 0 : 1;
}
