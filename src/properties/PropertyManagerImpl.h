#pragma once

#include <Quend/Framework/PropertyManager.h>

#include <map>
#include <string>

namespace Quend::Framework::Management {

/// The one implementation of the property store; its contract is in
/// <Quend/Framework/PropertyManager.h>.
class PropertyManagerImpl : public PropertyManager {
 public:
    const std::wstring& readProperty(const std::wstring& name) const override;
    bool hasProperty(const std::wstring& name) const override;
    void setProperty(const std::wstring& name, const std::wstring& value) override;
    void clearProperty(const std::wstring& name) override;

 private:
    std::map<std::wstring, std::wstring> properties;
};

}  // namespace Quend::Framework::Management
