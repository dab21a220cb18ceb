// Every ordered pair of the calls that may overlap, in two threads, for ThreadSanitizer to watch.
// The loops have nothing else in them: any other lock would order the two calls, and hide that one
// of theirs is missing. So nothing is made there, and arguments share nothing.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>

#include "core/ObjectRegistry.h"
#include "models/Logging.h"
#include "properties/PropertyManagerImpl.h"
#include "properties/TextConversion.h"
#include "support/Test.h"

namespace {

using namespace Quend::Framework;
using namespace Quend::Framework::Management;

// Each round has another name.
const std::vector<std::string> kNames = [] {
    std::vector<std::string> names;
    for (int round = 1; round <= 50; ++round) {
        names.push_back("name " + std::to_string(round));
    }
    return names;
}();

MemoryManager::IRegisteredObject* makeObject() { return new MemoryManager::IRegisteredObject; }

struct Services {
    MemoryManager::ObjectRegistry registry;
    PropertyManagerImpl store;
    const std::wstring set = L"set";
    const std::wstring missing = L"missing";
    Logging::LogManager manager;
    Logging::ChannelHandle channel = nullptr;

    Services() {
        for (std::size_t i = 0; i < kNames.size(); i += 2) {
            registry.registerObject(kNames[i].c_str(), makeObject);
        }
        store.setProperty(set, L"value");
        addProvider();
        channel = manager.getChannel("channel");
    }
    ~Services() {
        for (const std::string& name : kNames) {
            while (registry.findObject(name.c_str()) != nullptr) {
                registry.unregisterObject(name.c_str());
            }
        }
    }
    void addProvider() { manager.registerSinkProvider(std::make_unique<tests::TestProvider>("p")); }
};

// Gives each pair fresh services.
void runPairs(const std::vector<void (*)(Services&, const char* name)>& calls) {
    for (const auto first : calls) {
        for (const auto second : calls) {
            Services services;
            tests::inThreads(2, [&](unsigned thread) {
                const auto call = thread == 0 ? first : second;
                for (const std::string& name : kNames) {
                    call(services, name.c_str());
                }
            });
        }
    }
}

TEST(PairsOfCalls, ThatMayOverlap) {
    runPairs({
        [](Services& s, const char* name) { s.registry.registerObject(name, makeObject); },
        [](Services& s, const char* name) { s.registry.unregisterObject(name); },
        [](Services& s, const char* name) { s.registry.findObject(name); },
        [](Services&, const char*) { Framework::randomNumber(); },
        [](Services&, const char*) { Framework::propertyManager(); },
        [](Services&, const char* name) { Text::stringToWstring(name); },
        [](Services& s, const char*) { Text::wideToNarrow(s.set.c_str()); },
        // Of the store's, only those that do not change it.
        [](Services& s, const char*) { s.store.readProperty(s.set); },
        [](Services& s, const char*) {
            EXPECT_THROW(s.store.readProperty(s.missing), Exceptions::UnexistentProperty);
        },
        [](Services& s, const char* name) { s.manager.getChannel(name); },
        [](Services& s, const char*) { s.addProvider(); },
        [](Services& s, const char*) { s.manager.log(s.channel, 10, "written"); },
        [](Services& s, const char*) { s.manager.log(s.channel, 0, "cached"); },
#ifndef _WIN32
        [](Services& s, const char*) { s.manager.loadPluginLibrary(L""); },  // this program
#endif
    });
}

// Beside what uses no handle: that would be invalid.
TEST(PairsOfCalls, ShuttingLoggingDown) {
    runPairs({
        [](Services& s, const char* name) { s.manager.getChannel(name); },
        [](Services& s, const char*) { s.addProvider(); },
        [](Services& s, const char*) { s.manager.shutdownLogging(); },
    });
}

}  // namespace

#ifndef _WIN32
extern "C" Quend::Framework::Logging::LogSinkProvider* createLogSinkProvider() {
    return new tests::TestProvider("p");
}
#endif
