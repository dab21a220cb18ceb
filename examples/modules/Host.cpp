// Loads modules at run time, lets them work together through the library, and unloads them.
#include <Quend/Framework/MemoryManager.h>

#include <windows.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Module.h"
#include "SharedText.h"

using Quend::Framework::Management::MemoryManager::findObject;

namespace {

constexpr const char* kHelp = R"(usage: host TEXTFILE SETTINGSFILE

Loads four modules, one after the other, and unloads them again:
  Settings.dll  puts the lines "name = value" of SETTINGSFILE into the property store
  Reader.dll    registers a shared object and reads TEXTFILE into memory of the common heap
  Counter.dll   finds the object if it is there, counts lines and words, and grows the memory
  Reporter.dll  keeps the object alive, reads the settings, reports, and frees the memory
)";

template <typename Function>
Function* exportOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
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
        const bool isAsked = argc == 2 && argv[1] == std::string("--help");
        (isAsked ? std::cout : std::cerr) << kHelp;
        return isAsked ? 0 : 2;
    }
    const bool isDone = run(argv[1], argv[2]);
    const bool isGone = findObject(kSharedTextName) == nullptr;
    std::cout << (isGone ? "host: every reference was given back\n"
                         : "host: a reference was kept\n");
    if (isDone && isGone) {
        std::cout
            << "\nWhat you saw:\n"
               "- an object, shared by name, that outlived the module that created it\n"
               "- a block of memory that one module allocated, another grew, a third freed\n"
               "- settings of one module read by another, and a missing one as an exception\n";
    }
    return isDone && isGone ? 0 : 1;
}
