// What the modules know of the object that they share: its interface, and the factory. The class
// behind it is in Guestbook.dll.
#pragma once

#include <Quend/Framework/MemoryManager.h>

#include <string>

#if defined(Guestbook_EXPORTS)  // CMake defines it while it compiles this DLL
#define GUESTBOOK_API __declspec(dllexport)
#else
#define GUESTBOOK_API __declspec(dllimport)
#endif

class Guestbook : public Quend::Framework::Management::MemoryManager::IRegisteredObject {
 public:
    virtual void sign(const std::string& name) = 0;
    virtual const std::string& names() const = 0;
};

// A module that uses it imports Guestbook.dll, which then stays loaded as long as the module.
GUESTBOOK_API Quend::Framework::Management::MemoryManager::IRegisteredObject* makeGuestbook();
