#include "properties/PropertyManagerImpl.h"

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>

#include "properties/TextConversion.h"

namespace Quend::Framework::Management {

// Out of line, so that the library holds the one copy of the class that all modules share.
PropertyManager::PropertyManager() = default;
PropertyManager::PropertyManager(const PropertyManager&) = default;
PropertyManager& PropertyManager::operator=(const PropertyManager&) = default;
PropertyManager::~PropertyManager() = default;

namespace {

// Made apart from the throw: whatever is alive at a throw is unwound, which doubled its time.
Exceptions::UnexistentProperty unexistent(const wchar_t* complaint, const std::wstring& name) {
    return Exceptions::UnexistentProperty(Text::wideToNarrow((complaint + name).c_str()).c_str());
}

}  // namespace

const std::wstring& PropertyManagerImpl::readProperty(const std::wstring& name) const {
    const auto found = properties.find(name);
    if (found == properties.end()) {
        throw unexistent(L"Trying to read unexistent property: ", name);
    }
    return found->second;
}

bool PropertyManagerImpl::hasProperty(const std::wstring& name) const {
    return properties.contains(name);
}

void PropertyManagerImpl::setProperty(const std::wstring& name, const std::wstring& value) {
    // The old entry leaves the store first, so that a failure leaves the property absent. It is
    // destroyed last, since `name` and `value` may refer into it.
    const auto replaced = properties.extract(name);
    properties.emplace(name, value);
}

void PropertyManagerImpl::clearProperty(const std::wstring& name) {
    const auto found = properties.find(name);
    if (found == properties.end()) {
        throw unexistent(L"Trying to clear an unexistent property: ", name);
    }
    properties.erase(found);
}

}  // namespace Quend::Framework::Management

namespace Quend::Framework::Framework {

Management::PropertyManager* propertyManager() {
    static Management::PropertyManagerImpl store;
    return &store;
}

}  // namespace Quend::Framework::Framework
