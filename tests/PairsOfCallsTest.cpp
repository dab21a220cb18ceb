// Every ordered pair of the calls that may overlap, in two threads, for ThreadSanitizer to watch.
// The loops have nothing else in them: any other lock would order the two calls, and hide that one
// of theirs is missing. So names are made beforehand, and arguments share nothing.
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>

#include "core/ObjectRegistry.h"
#include "models/Logging.h"
#include "properties/PropertyManagerImpl.h"
#include "properties/TextConversion.h"
#include "support/Threads.h"

namespace {

using namespace Quend::Framework;
using namespace Quend::Framework::Management;

constexpr std::size_t kRounds = 50;
const std::vector<std::string> names = [] {
    std::vector<std::string> made;
    for (std::size_t i = 0; i < kRounds; ++i) {
        made.push_back("name " + std::to_string(i));
    }
    return made;
}();

// Gives each pair a fresh `Subject`; every call gets it and a name, which is new in each round.
template <typename Subject, std::size_t count>
void runPairs(void (*const (&calls)[count])(Subject&, const char*)) {
    for (const auto first : calls) {
        for (const auto second : calls) {
            Subject subject;
            tests::inThreads(2, [&](unsigned thread) {
                const auto call = thread == 0 ? first : second;
                for (const std::string& name : names) {
                    call(subject, name.c_str());
                }
            });
        }
    }
}

MemoryManager::IRegisteredObject* makeObject() { return new MemoryManager::IRegisteredObject; }

struct Registry : MemoryManager::ObjectRegistry {
    Registry() {
        for (std::size_t i = 0; i < kRounds; i += 2) {
            registerObject(names[i].c_str(), makeObject);
        }
    }
    ~Registry() {
        for (const std::string& name : names) {
            while (findObject(name.c_str()) != nullptr) {
                unregisterObject(name.c_str());
            }
        }
    }
};

TEST(PairsOfCalls, ObjectRegistry) {
    runPairs<Registry>({
        [](Registry& r, const char* name) { r.registerObject(name, makeObject); },
        [](Registry& r, const char* name) { r.unregisterObject(name); },
        [](Registry& r, const char* name) { r.findObject(name); },
    });
}

TEST(PairsOfCalls, FunctionsOfTheFramework) {
    runPairs<int>({
        [](int&, const char*) { Framework::randomNumber(); },
        [](int&, const char*) { Framework::propertyManager(); },
        [](int&, const char*) { Text::wideToNarrow(L"text"); },
        [](int&, const char*) { Text::wstringToString(L"text"); },
        [](int&, const char*) { Text::stringToWstring("text"); },
    });
}

// Readers only: what changes the store must not overlap any other call.
struct Properties : PropertyManagerImpl {
    const std::wstring set = L"set";
    const std::wstring missing = L"missing";
    Properties() { setProperty(set, L"value"); }
};

TEST(PairsOfCalls, ReadingProperties) {
    runPairs<Properties>({
        [](Properties& p, const char*) { p.readProperty(p.set); },
        [](Properties& p, const char*) { p.hasProperty(p.missing); },
        [](Properties& p, const char*) {
            EXPECT_THROW(p.readProperty(p.missing), Exceptions::UnexistentProperty);
        },
    });
}

struct Manager : Logging::LogManager {
    Logging::ChannelHandle channel = nullptr;
    Manager() {
        addProvider(*this, nullptr);
        channel = getChannel("channel");
    }
    static void addProvider(Manager& m, const char*) {
        m.registerSinkProvider(std::make_unique<tests::TestProvider>("p"));
    }
    static void createChannel(Manager& m, const char* name) { m.getChannel(name); }
};

TEST(PairsOfCalls, Logging) {
    runPairs<Manager>({
        Manager::createChannel, Manager::addProvider,
        [](Manager& m, const char*) { m.log(m.channel, 10, "written"); },
        [](Manager& m, const char*) { m.log(m.channel, 0, "cached"); },
#ifndef _WIN32
        [](Manager& m, const char*) { m.loadPluginLibrary(L""); },  // this program
#endif
    });
}

// Beside what uses no handle: that would be invalid.
TEST(PairsOfCalls, ShuttingLoggingDown) {
    runPairs<Manager>({
        Manager::createChannel,
        Manager::addProvider,
        [](Manager& m, const char*) { m.shutdownLogging(); },
    });
}

}  // namespace

#ifndef _WIN32
extern "C" Quend::Framework::Logging::LogSinkProvider* createLogSinkProvider() {
    return new tests::TestProvider("p");
}
#endif
