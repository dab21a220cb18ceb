// Loads two modules, and unloads first the one that created the guest book.
#include <windows.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

// A module from its start to its stop.
class RunningModule {
 public:
    explicit RunningModule(const std::string& file) : module(LoadLibraryA(file.c_str())) {
        if (module == nullptr) {
            const DWORD error = GetLastError();
            throw std::runtime_error(file + " cannot be loaded, error " + std::to_string(error));
        }
        std::printf("host: loaded %s\n", file.c_str());
        auto* const start = find<bool()>("start");
        if (start == nullptr || !start()) {
            FreeLibrary(module);
            throw std::runtime_error(file + " cannot be started");
        }
    }
    RunningModule(const RunningModule&) = delete;
    RunningModule& operator=(const RunningModule&) = delete;
    ~RunningModule() {
        find<void()>("stop")();
        FreeLibrary(module);
    }

 private:
    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

    HMODULE module;
};

}  // namespace

int main() try {
    auto morning = std::make_unique<RunningModule>("Morning.dll");
    const RunningModule evening("Evening.dll");
    morning.reset();
    std::puts("host: Morning.dll is gone, and the guest book is still there");
} catch (const std::exception& error) {
    std::fprintf(stderr, "host: %s\n", error.what());
    return 1;
}
