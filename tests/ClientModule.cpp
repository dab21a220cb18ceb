// A client of the DLL that is loaded and unloaded with it, and calls everything, with mistakes too.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>

#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>

#include "support/Tally.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;
using namespace Quend::Framework::Exceptions;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::randomNumber;

std::atomic<Tally*> current{nullptr};
std::mutex propertyMutex;  // the store has none: its users agree on one

struct Object : IRegisteredObject {
    Object() { ++current.load()->objects; }
    ~Object() override { --current.load()->objects; }
};

IRegisteredObject* make() { return new Object; }
IRegisteredObject* fail() { throw std::runtime_error("on purpose"); }
IRegisteredObject* callBack() { return findObject("inner"); }

void useObjects(Tally& tally, const std::string& name) {
    IRegisteredObject* const object = registerObject(name.c_str(), make);
    tally.require(object == findObject(name.c_str()));
    unregisterObject(name.c_str());
    // A name that nobody holds, or the factory would not be called.
    tally.requireThrow<std::runtime_error>([] { registerObject("never held", fail); });
    tally.requireThrow<std::system_error>([] { registerObject("never held", callBack); });
}

void useProperties(Tally& tally, const std::wstring& name) {
    const std::lock_guard lock(propertyMutex);
    propertyManager()->setProperty(name, L"a value that no short string holds");
    propertyManager()->setProperty(name, propertyManager()->readProperty(name));
    propertyManager()->clearProperty(name);
    tally.requireThrow<UnexistentProperty>([&] { propertyManager()->readProperty(name); });
    tally.requireThrow<FrameworkException>([&] { propertyManager()->clearProperty(name); });
}

}  // namespace

extern "C" __declspec(dllexport) void work(Tally* tally) {
    current = tally;
    for (int i = 0; i < 100; ++i) {
        useObjects(*tally, "object " + std::to_string(i % 13));
        useProperties(*tally, L"property " + std::to_wstring(i % 7));
        deallocate(reallocate(allocate(randomNumber()), 5000));
    }
}

extern "C" __declspec(dllexport) void leaveObjectBehind() { registerObject("left behind", make); }

extern "C" __declspec(dllexport) unsigned short drawNumber() { return randomNumber(); }
