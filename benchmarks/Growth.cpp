// How the cost grows with the number of names, and with the number of threads. "empty loop" is
// what the names themselves cost: they are met in random order and do not stay in the caches.
#include <map>
#include <memory>
#include <mutex>
#include <string_view>

#include "Bench.h"
#include "core/ObjectRegistry.h"
#include "logging/LogManager.h"
#include "properties/PropertyManagerImpl.h"

namespace bench {
namespace {

using namespace Quend::Framework;
using Management::MemoryManager::IRegisteredObject;

struct Tables {
    explicit Tables(std::size_t count) : names(shuffledNames(count)) {
        for (const std::string& name : names) {
            wideNames.emplace_back(name.begin(), name.end());
        }
        for (std::size_t i = 0; i < count; ++i) {
            objects.registerObject(
                names[i].c_str(), +[] { return new IRegisteredObject; });
        }
        for (const std::wstring& name : wideNames) {
            store.setProperty(name, L"the value");
        }
        for (const std::string& name : names) {
            manager.getChannel(name.c_str());
        }
        for (const std::string& name : names) {
            bare.emplace(name, nullptr);
        }
    }

    std::vector<std::string> names;
    std::vector<std::wstring> wideNames;
    Management::MemoryManager::ObjectRegistry objects;
    Management::PropertyManagerImpl store;
    Logging::LogManager manager;
    std::map<std::string, void*, std::less<>> bare;
};

}  // namespace

void addGrowth() {
    for (const std::size_t count : {10U, 100U, 1'000U, 10'000U, 100'000U, 1'000'000U}) {
        auto& tables = *new Tables(count);
        const std::string suffix = std::string("/").append(std::to_string(count));
        addCase("findObject" + suffix, [&tables, name = Round(tables.names)]() mutable {
            return tables.objects.findObject(name.next().c_str());
        });
        addCase("readProperty" + suffix, [&tables, name = Round(tables.wideNames)]() mutable {
            return &tables.store.readProperty(name.next());
        });
        addCase("getChannel" + suffix, [&tables, name = Round(tables.names)]() mutable {
            return tables.manager.getChannel(name.next().c_str());
        });
        addCase("bare map" + suffix, [&tables, name = Round(tables.names)]() mutable {
            return tables.bare.find(std::string_view(name.next().c_str()))->second;
        });
    }

    struct CountingSink final : Logging::LogSink {
        void release() noexcept override { delete this; }
        void write(std::uint32_t /*level*/, const char* /*text*/) override { ++count; }
        unsigned long count = 0;
    };
    struct CountingProvider final : Logging::LogSinkProvider {
        Logging::LogSink* createSink(const char* /*channelName*/) override {
            return new CountingSink;
        }
    };
    Logging::registerSinkProvider(std::make_unique<CountingProvider>());
    auto* const channel = Logging::getChannel("threads");
    auto& mutex = *new std::mutex;
    auto& objects = *new Management::MemoryManager::ObjectRegistry;
    objects.registerObject(
        "held", +[] { return new IRegisteredObject; });
    for (const int threads : {1, 2, 4, 8, 16}) {
        const std::string suffix = std::string("/").append(std::to_string(threads));
        addCase(
            "register" + suffix,
            [&objects] {
                objects.registerObject("held", nullptr);
                objects.unregisterObject("held");
            },
            threads);
        addCase(
            "log" + suffix, [channel] { Logging::log(channel, 10, "Reading all records"); },
            threads);
        addCase(
            "bare lock" + suffix, [&mutex] { const std::lock_guard lock(mutex); }, threads);
    }
}

}  // namespace bench
