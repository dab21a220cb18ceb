/// \file
// The store of named text properties that the modules of a process share; propertyManager() in
/// <Quend/Framework/Framework.h> gives the one there is. Names and values mean what the modules
/// agree on; the library defines none.
///
/// Threading: the store takes no lock. Any number of threads may read (readProperty,
/// hasProperty) at the same time; setProperty and clearProperty must not overlap any other call.
///
/// Names are compared exactly, code unit by code unit: case, accents and normalisation are not
/// folded, the empty name is a name, and a NUL inside a name is part of it.
#pragma once

#include <string>

#include <Quend/Framework/Export.h>

namespace Quend {
namespace Framework {
namespace Management {

/// Modules call the store through this class's virtual table alone, so the order of its virtual
/// operations and their signatures are a binary interface: nothing is inserted, moved or changed.
class QUEND_FRAMEWORK_API PropertyManager {
 public:
    PropertyManager();
    PropertyManager(const PropertyManager& other);
    PropertyManager& operator=(const PropertyManager& other);

    /// The store belongs to the library. Modules never delete it.
    virtual ~PropertyManager();

    /// The value itself, not a copy: valid until `name` is set again or cleared, or the library
    /// is unloaded. Throws Exceptions::UnexistentProperty, "Trying to read unexistent property: "
    /// and the name, if there is none. The text is narrow; it is empty when any of it cannot be
    /// converted in the process's locale, and ends at a NUL inside the name.
    virtual const std::wstring& readProperty(const std::wstring& name) const = 0;

    /// Never throws.
    virtual bool hasProperty(const std::wstring& name) const = 0;

    /// Stores copies of both, replacing any value of that name: the old entry goes, a new one is
    /// made, and references to the old value end with it. Both arguments may refer into the
    /// store. Throws std::bad_alloc when memory runs out; the property is then absent, whatever
    /// it was before, and no other is touched.
    virtual void setProperty(const std::wstring& name, const std::wstring& value) = 0;

    /// Removes the entry. Throws Exceptions::UnexistentProperty, "Trying to clear an unexistent
    /// property: " and the name, if there is none; the text as for readProperty.
    virtual void clearProperty(const std::wstring& name) = 0;
};

}  // namespace Management
}  // namespace Framework
}  // namespace Quend
