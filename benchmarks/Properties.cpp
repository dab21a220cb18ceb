// The property store.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>

#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "Bench.h"

#ifdef _WIN32
extern "C" __declspec(dllimport) void throwUnexistentProperty(const std::wstring& name);
#endif

namespace bench {
namespace {

using Quend::Framework::Framework::propertyManager;

// As long as a path, which is what most properties are.
constexpr const wchar_t* kValue = L"C:\\Program Files\\Kit\\Modules\\Shared";

// The same names in each table, entered in the same order.
struct Properties {
    explicit Properties(std::size_t count) : names(shuffledNames<std::wstring>(count)) {
        for (const std::wstring& name : names) {
            propertyManager()->setProperty(name, kValue);
        }
        for (const std::wstring& name : names) {
            sorted.emplace(name, kValue);
        }
        for (const std::wstring& name : names) {
            hashed.emplace(name, kValue);
        }
    }
    ~Properties() {
        for (const std::wstring& name : names) {
            propertyManager()->clearProperty(name);
        }
    }
    Properties(const Properties&) = delete;
    Properties& operator=(const Properties&) = delete;

    std::vector<std::wstring> names;
    std::map<std::wstring, std::wstring> sorted;
    std::unordered_map<std::wstring, std::wstring> hashed;
    std::shared_mutex sharedMutex;
};

void addRead(std::size_t count) {
    const auto all = std::make_shared<Properties>(count);
    const std::string group = "readProperty " + std::to_string(count);
    addCase(group + "/ours", [all, store = propertyManager(), name = Round(all->names)]() mutable {
        return &store->readProperty(name.next());
    });
    addCase(group + "/bare", byAddress([all, name = Round(all->names)]() mutable {
                const auto found = all->sorted.find(name.next());
                return found == all->sorted.end() ? nullptr : &found->second;
            }));
    addCase(group + "/hashed", byAddress([all, name = Round(all->names)]() mutable {
                const std::shared_lock lock(all->sharedMutex);
                const auto found = all->hashed.find(name.next());
                return found == all->hashed.end() ? nullptr : &found->second;
            }));
}

const Group readFew([] { addRead(10); });
const Group readMany([] { addRead(1'000); });
const Group readVeryMany([] { addRead(100'000); });

#ifdef _WIN32
auto caught(void (*thrower)(const std::wstring& name)) {
    return [thrower, name = std::wstring(L"missing")] {
        try {
            thrower(name);
        } catch (const Quend::Framework::Exceptions::UnexistentProperty& error) {
            return error.getMessage().size();
        }
        return std::size_t();
    };
}

const Group missing([] {
    addCase("missing property/ours",
            caught([](const std::wstring& name) { propertyManager()->readProperty(name); }));
    addCase("missing property/bare", caught(&throwUnexistentProperty));
});
#endif

}  // namespace
}  // namespace bench
