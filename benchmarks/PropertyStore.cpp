// A hit among 100 names. Bare: find in the same map, out of line, the value by reference.
#include <Quend/Framework/PropertyManager.h>

#include <map>

#include "Bench.h"
#include "properties/PropertyManagerImpl.h"

namespace bench {

// As long as a path, which is what most properties are.
constexpr const wchar_t* kValue = L"C:\\Program Files\\Kit\\Modules\\Shared";

void addPropertyStore() {
    auto& names = *new std::vector<std::wstring>;
    for (const std::string& name : shuffledNames(100)) {
        names.emplace_back(name.begin(), name.end());
    }
    auto& bare = *new std::map<std::wstring, std::wstring>;
    Quend::Framework::Management::PropertyManager& store =
        *new Quend::Framework::Management::PropertyManagerImpl;
    for (const std::wstring& name : names) {
        store.setProperty(name, kValue);
    }
    for (const std::wstring& name : names) {
        bare.emplace(name, kValue);
    }
    addCase("readProperty/ours",
            [&store, name = Round(names)]() mutable { return &store.readProperty(name.next()); });
    addCase("readProperty/bare", [&bare, name = Round(names)]() mutable BENCH_OUT_OF_LINE {
        const auto found = bare.find(name.next());
        return found == bare.end() ? nullptr : &found->second;
    });
}

}  // namespace bench
