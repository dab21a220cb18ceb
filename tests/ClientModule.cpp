// A client of the DLL that is loaded and unloaded with it.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>

using namespace Quend::Framework::Management::MemoryManager;
using Quend::Framework::Exceptions::UnexistentProperty;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::randomNumber;

namespace {

long* destroyedObjects = nullptr;

struct Object : IRegisteredObject {
    ~Object() override { ++*destroyedObjects; }
};

}  // namespace

// Calls everything once; counts the destroyed objects in `destroyed`. Returns whether everything
// worked.
extern "C" __declspec(dllexport) bool useLibrary(long* destroyed) {
    destroyedObjects = destroyed;
    const auto factory = []() -> IRegisteredObject* { return new Object; };
    const bool isNew = findObject("used") == nullptr;
    const bool isFound = registerObject("used", factory) == findObject("used");
    unregisterObject("used");
    deallocate(reallocate(allocate(10), 1000));
    propertyManager()->setProperty(L"name", L"value");
    try {
        propertyManager()->clearProperty(L"missing");
    } catch (const UnexistentProperty&) {
        randomNumber();
        return isNew && isFound;
    }
    return false;
}

extern "C" __declspec(dllexport) void leaveObjectBehind() {
    registerObject("left behind", []() -> IRegisteredObject* { return new Object; });
}

extern "C" __declspec(dllexport) unsigned short drawNumber() { return randomNumber(); }
