/// \file
/// Reads a property that may not be set. Header-only, on top of propertyManager().
#pragma once

#include <Quend/Framework/Framework.h>

#include <string>

namespace Quend {
namespace Framework {
namespace Framework {

/// Returns a copy of the value of `name`, or `fallback` if there is no such property.
/// Throws: std::bad_alloc.
/// Threading: as for any read of the store: must not overlap setProperty or clearProperty.
inline std::wstring readPropertyOr(const std::wstring& name, const std::wstring& fallback) {
    const Management::PropertyManager& store = *propertyManager();
    return store.hasProperty(name) ? store.readProperty(name) : fallback;
}

}  // namespace Framework
}  // namespace Framework
}  // namespace Quend
