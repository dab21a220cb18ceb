#pragma once

#include <Quend/Framework/Export.h>

#include <string>

namespace Quend {
namespace Framework {
namespace Management {

/// The store of named text properties that the modules of a process share; propertyManager() in
/// <Quend/Framework/Framework.h> returns it. The library defines no property of its own.
///
/// Names are compared exactly, code unit by code unit: case, accents and normalisation count, the
/// empty name is a name, and a NUL is part of a name.
///
/// A binary interface: modules call the store through this virtual table. Never insert, move or
/// change an operation.
///
/// Threading: the store takes no lock. Any number of threads may call readProperty and hasProperty
/// at the same time; setProperty and clearProperty must not overlap any other call.
class QUEND_FRAMEWORK_API PropertyManager {
 public:
    PropertyManager();
    PropertyManager(const PropertyManager& other);
    PropertyManager& operator=(const PropertyManager& other);

    /// The library destroys the store at unload; modules never delete it.
    virtual ~PropertyManager();

    /// Returns a reference to the stored value, valid until `name` is set again or cleared, or the
    /// library is unloaded.
    /// Throws: Exceptions::UnexistentProperty, "Trying to read unexistent property: " and the name.
    /// The message ends at a NUL in the name. Where the process's locale lacks a character, the
    /// message is empty, or has one that looks alike: the C runtime decides which.
    virtual const std::wstring& readProperty(const std::wstring& name) const = 0;

    /// Returns whether there is a property of this name. Never throws.
    virtual bool hasProperty(const std::wstring& name) const = 0;

    /// Stores copies of both, in place of any earlier value of that name; both may refer into the
    /// store. References to the earlier value become invalid.
    /// Throws: std::bad_alloc.
    /// On failure: the property is absent, even if it existed before.
    virtual void setProperty(const std::wstring& name, const std::wstring& value) = 0;

    /// Removes the property.
    /// Throws: Exceptions::UnexistentProperty, "Trying to clear an unexistent property: " and the
    /// name, as readProperty does.
    virtual void clearProperty(const std::wstring& name) = 0;
};

}  // namespace Management
}  // namespace Framework
}  // namespace Quend
