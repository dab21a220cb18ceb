// A hit among 1,000 names. Bare: find in the same map, the value by reference.
#include <Quend/Framework/PropertyManager.h>

#include <map>

#include "Bench.h"
#include "properties/PropertyManagerImpl.h"

namespace bench {

void addPropertyStore() {
    auto& names = *new std::vector<std::wstring>;
    for (const std::string& name : shuffledNames(1000)) {
        names.emplace_back(name.begin(), name.end());
    }
    auto& bare = *new std::map<std::wstring, std::wstring>;
    Quend::Framework::Management::PropertyManager& store =
        *new Quend::Framework::Management::PropertyManagerImpl;
    for (const std::wstring& name : names) {
        store.setProperty(name, L"the value");
    }
    for (const std::wstring& name : names) {
        bare.emplace(name, L"the value");
    }
    addCase("readProperty/ours", [&store, name = Round(names)]() mutable {
        return &store.readProperty(name.next());
    });
    addCase("readProperty/bare", [&bare, name = Round(names)]() mutable {
        const auto found = bare.find(name.next());
        return found == bare.end() ? nullptr : &found->second;
    });
}

}  // namespace bench
