// Uses everything the headers export, so that a compiler has to name and lay out all of it.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>
#include <Quend/Framework/PropertyManager.h>

using namespace Quend::Framework::Exceptions;
using namespace Quend::Framework::Management;
using namespace Quend::Framework::Management::MemoryManager;

struct Object : IRegisteredObject {};

struct Store : PropertyManager {
    const std::wstring& readProperty(const std::wstring& name) const override;
    bool hasProperty(const std::wstring& name) const override;
    void setProperty(const std::wstring& name, const std::wstring& value) override;
    void clearProperty(const std::wstring& name) override;
};

template <typename Derived>
void useMembers() {
    Derived first;
    Derived second(first);
    second = first;
}

void useAll() {
    deallocate(reallocate(allocate(1), 2));
    registerObject("", nullptr);
    delete findObject("");
    unregisterObject("");
    Quend::Framework::Framework::randomNumber();
    delete Quend::Framework::Framework::propertyManager();
    useMembers<Object>();
    useMembers<Store>();
    UnexistentProperty unexistent("");
    InvalidArgument invalid("");
    FrameworkException base;
}
