// Uses everything the headers export, so that a compiler has to name and lay out all of it; and of
// the inner interfaces those whose slots are fixed: plug-ins call them, or are called by them.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>

#include "Quend/RegistryAccess/RegistryErrors.h"
#include "logging/LogSink.h"

using namespace Quend::Framework;
using namespace Quend::Framework::Management::MemoryManager;
using Quend::RegistryAccess::Registry;

// Calls what an exported base class exports.
template <typename Base>
struct Derived : Base {
    Derived() {}
    Derived(const Derived& other) : Base(other) { Base::operator=(other); }
};
template struct Derived<IRegisteredObject>;
template struct Derived<Management::PropertyManager>;

// Where this is defined, GCC's ABI has the table of the class.
Registry::GenericRegistryError::~GenericRegistryError() = default;

void useAll(Logging::LogSink& sink, Logging::LogSinkProvider& provider) {
    deallocate(reallocate(allocate(1), 2));
    registerObject("", nullptr);
    delete findObject("");
    unregisterObject("");
    Framework::randomNumber();
    delete Framework::propertyManager();
    Exceptions::UnexistentProperty unexistent("");
    Exceptions::InvalidArgument invalid("");
    Registry::NotFound notFound("", 0);
    sink.release();
    provider.createSink("");
}
