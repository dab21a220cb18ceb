// A hit among 100 names. Bare: find in the same map. A miss: bare is a DLL that throws the same
// object with its text ready.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>

#include <map>
#include <memory>

#include "Bench.h"

#ifdef QUEND_PEERS
#include <boost/property_tree/ptree.hpp>
#endif
#ifdef _WIN32
extern "C" __declspec(dllimport) void throwUnexistentProperty(const char* text);
#endif

namespace bench {
namespace {

using Quend::Framework::Framework::propertyManager;

// As long as a path, which is what most properties are.
constexpr const wchar_t* kValue = L"C:\\Program Files\\Kit\\Modules\\Shared";

// The names are properties of the store as long as this object.
struct Properties {
    explicit Properties(std::size_t count) : names(shuffledNames<std::wstring>(count)) {
        for (const std::wstring& name : names) {
            propertyManager()->setProperty(name, kValue);
        }
        for (const std::wstring& name : names) {
            bare.emplace(name, kValue);
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
    std::map<std::wstring, std::wstring> bare;
};

void addRead(const std::shared_ptr<Properties>& all, const std::string& ours,
             const std::string& bare) {
    addCase(ours, [all, store = propertyManager(), name = Round(all->names)]() mutable {
        return &store->readProperty(name.next());
    });
    addCase(bare, byAddress([all, name = Round(all->names)]() mutable {
                const auto found = all->bare.find(name.next());
                return found == all->bare.end() ? nullptr : &found->second;
            }));
}

#ifdef _WIN32
template <typename Thrower>
auto caught(const Thrower& thrower) {
    return [thrower] {
        try {
            thrower();
        } catch (const Quend::Framework::Exceptions::UnexistentProperty& error) {
            return error.getMessage().size();
        }
        return std::size_t();
    };
}
#endif

const Group store(Mode::table, {100}, [](std::size_t count) {
    const auto all = std::make_shared<Properties>(count);
    addRead(all, "readProperty/ours", "readProperty/bare");
#ifdef QUEND_PEERS
    // get_child takes the name for a path, of one element here.
    const auto tree = std::make_shared<boost::property_tree::wptree>();
    for (const std::wstring& name : all->names) {
        tree->put(name, kValue);
    }
    addCase("readProperty/Boost", [all, tree, name = Round(all->names)]() mutable {
        return &tree->get_child(name.next()).data();
    });
#endif
#ifdef _WIN32
    addCase("missing property/ours",
            caught([name = std::wstring(L"missing")] { propertyManager()->readProperty(name); }));
    addCase("missing property/bare",
            caught([] { throwUnexistentProperty("Trying to read unexistent property: missing"); }));
#endif
});

const Group growth(Mode::growth, kNameCounts, [](std::size_t count) {
    addRead(std::make_shared<Properties>(count), sized("readProperty", count),
            sized("bare wide map", count));
});

}  // namespace
}  // namespace bench
