// A client of the DLL that does everything that one can do with it, wrong things included.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>

#include "Soak.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;
using Quend::Framework::Exceptions::FrameworkException;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::randomNumber;

std::atomic<Tally*> current{nullptr};
std::mutex propertyMutex;  // the store has none: its users agree on one

struct Object : IRegisteredObject {
    Object() { ++current.load()->objectsMade; }
    ~Object() override { ++current.load()->objectsDestroyed; }
};

IRegisteredObject* make() { return new Object; }
IRegisteredObject* fail() { throw std::runtime_error("on purpose"); }
IRegisteredObject* callBack() { return findObject("inner"); }

template <typename Exception, typename Call>
void mustThrow(Tally& tally, Call call) {
    try {
        call();
        ++tally.mistakes;
    } catch (const Exception&) {
        ++tally.exceptions;
    }
}

void useObjects(Tally& tally, const std::string& name) {
    IRegisteredObject* const object = registerObject(name.c_str(), make);
    tally.mistakes += object != findObject(name.c_str()) ? 1 : 0;
    unregisterObject(name.c_str());
    // A name that nobody holds, or the factory would not be called.
    mustThrow<std::runtime_error>(tally, [] { registerObject("never held", fail); });
    mustThrow<std::system_error>(tally, [] { registerObject("never held", callBack); });
}

void useProperties(Tally& tally, const std::wstring& name) {
    const std::lock_guard lock(propertyMutex);
    propertyManager()->setProperty(name, L"a value that no short string holds");
    propertyManager()->setProperty(name, propertyManager()->readProperty(name));
    propertyManager()->clearProperty(name);
    mustThrow<FrameworkException>(tally, [&] { propertyManager()->readProperty(name); });
}

void useMemory(Tally& tally) {
    void* const block = reallocate(allocate(randomNumber() % 1000U + 1U), 5000);
    std::memset(block, 1, 5000);
    deallocate(block);
    tally.mistakes += allocate(~0ULL / 2) != nullptr ? 1 : 0;
}

}  // namespace

extern "C" __declspec(dllexport) void work(Tally* tally) {
    current = tally;
    for (int i = 0; i < 100; ++i) {
        useObjects(*tally, "object " + std::to_string(i % 13));
        useProperties(*tally, L"property " + std::to_wstring(i % 7));
        useMemory(*tally);
        tally->operations += 15;
    }
}
