// Every ordered pair of the calls that may overlap, in two threads, for ThreadSanitizer to watch.
// The loops have nothing else in them: any other lock would order the two calls, and hide that one
// of theirs is missing. So names are made beforehand, and arguments share nothing.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

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

// Gives each pair a fresh `Subject`; every call gets it and the number of the round.
template <typename Subject, std::size_t count>
void runPairs(void (*const (&calls)[count])(Subject&, std::size_t)) {
    for (const auto first : calls) {
        for (const auto second : calls) {
            Subject subject;
            tests::inThreads(2, [&](unsigned thread) {
                const auto call = thread == 0 ? first : second;
                for (std::size_t round = 0; round < kRounds; ++round) {
                    call(subject, round);
                }
            });
        }
    }
}

MemoryManager::IRegisteredObject* makeObject() { return new MemoryManager::IRegisteredObject; }

struct Registry {
    MemoryManager::ObjectRegistry registry;
    std::array<std::string, kRounds> names;  // every other one is registered

    Registry() {
        for (std::size_t i = 0; i < kRounds; ++i) {
            names.at(i) = std::to_string(i);
            i % 2 == 0 ? registry.registerObject(names.at(i).c_str(), makeObject) : nullptr;
        }
    }
    ~Registry() {
        for (const std::string& name : names) {
            while (registry.findObject(name.c_str()) != nullptr) {
                registry.unregisterObject(name.c_str());
            }
        }
    }
};

TEST(PairsOfCalls, ObjectRegistry) {
    runPairs<Registry>({
        [](Registry& r, std::size_t i) {
            r.registry.registerObject(r.names[i].c_str(), makeObject);
        },
        [](Registry& r, std::size_t i) { r.registry.unregisterObject(r.names[i].c_str()); },
        [](Registry& r, std::size_t i) { r.registry.findObject(r.names[i].c_str()); },
    });
}

struct Nothing {};

TEST(PairsOfCalls, FunctionsOfTheFramework) {
    runPairs<Nothing>({
        [](Nothing&, std::size_t) { Framework::randomNumber(); },
        [](Nothing&, std::size_t) { Framework::propertyManager(); },
        [](Nothing&, std::size_t) { Text::wideToNarrow(L"text"); },
        [](Nothing&, std::size_t) { Text::wstringToString(L"text"); },
        [](Nothing&, std::size_t) { Text::stringToWstring("text"); },
    });
}

// Readers only: what changes the store must not overlap any other call.
struct Properties {
    PropertyManagerImpl store;
    const std::wstring set = L"set";
    const std::wstring missing = L"missing";

    Properties() { store.setProperty(set, L"value"); }
};

TEST(PairsOfCalls, ReadingProperties) {
    runPairs<Properties>({
        [](Properties& p, std::size_t) { p.store.readProperty(p.set); },
        [](Properties& p, std::size_t) { p.store.hasProperty(p.missing); },
        [](Properties& p, std::size_t) {
            EXPECT_THROW(p.store.readProperty(p.missing), Exceptions::UnexistentProperty);
        },
    });
}

struct Manager {
    Logging::LogManager manager;
    Logging::ChannelHandle channel = nullptr;
    std::array<std::string, kRounds> names;

    Manager() {
        manager.registerSinkProvider(std::make_unique<tests::TestProvider>("p"));
        channel = manager.getChannel("channel");
        for (std::size_t i = 0; i < kRounds; ++i) {
            names.at(i) = "channel " + std::to_string(i);
        }
    }
};

void createChannel(Manager& m, std::size_t i) { m.manager.getChannel(m.names[i].c_str()); }
void addProvider(Manager& m, std::size_t) {
    m.manager.registerSinkProvider(std::make_unique<tests::TestProvider>("p"));
}

TEST(PairsOfCalls, Logging) {
    runPairs<Manager>({
        createChannel, addProvider,
        [](Manager& m, std::size_t) { m.manager.log(m.channel, 10, "written"); },
        [](Manager& m, std::size_t) { m.manager.log(m.channel, 0, "cached"); },
#ifndef _WIN32
        [](Manager& m, std::size_t) { m.manager.loadPluginLibrary(L""); },  // this program
#endif
    });
}

// Beside what uses no handle: that would be invalid.
TEST(PairsOfCalls, ShuttingLoggingDown) {
    runPairs<Manager>({
        createChannel,
        addProvider,
        [](Manager& m, std::size_t) { m.manager.shutdownLogging(); },
    });
}

}  // namespace

#ifndef _WIN32
extern "C" Quend::Framework::Logging::LogSinkProvider* createLogSinkProvider() {
    return new tests::TestProvider("p");
}
#endif
