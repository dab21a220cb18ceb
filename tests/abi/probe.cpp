// Uses everything the headers export, so that a compiler has to name and lay out all of it; and of
// the inner interfaces those whose slots are fixed: plug-ins call them, or are called by them.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>
#include <Quend/Framework/PropertyManager.h>

#include "Quend/RegistryAccess/RegistryErrors.h"
#include "logging/LogSink.h"

using namespace Quend::Framework::Exceptions;
using namespace Quend::Framework::Management;
using namespace Quend::Framework::Management::MemoryManager;
using Quend::Framework::Logging::LogSink;
using Quend::Framework::Logging::LogSinkProvider;
using Quend::RegistryAccess::Registry;

struct Object : IRegisteredObject {};

struct Store : PropertyManager {
    const std::wstring& readProperty(const std::wstring& name) const override;
    bool hasProperty(const std::wstring& name) const override;
    void setProperty(const std::wstring& name, const std::wstring& value) override;
    void clearProperty(const std::wstring& name) override;
};

struct Sink : LogSink {
    void release() noexcept override;
    void write(std::uint32_t level, const char* text) override;
};

struct Provider : LogSinkProvider {
    LogSink* createSink(const char* channelName) override;
};

// Where this is defined, GCC's ABI has the table of the class.
Registry::GenericRegistryError::~GenericRegistryError() = default;

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
    Sink sink;
    Provider provider;
    Registry::GenericRegistryError error(Registry::NotFound("", 0));
    error.what();
}
