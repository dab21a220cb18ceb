// The object that the modules share. Its class lives in a DLL of its own, which every module that
// uses it imports, and which therefore stays loaded as long as any of them does.
#pragma once

#include <Quend/Framework/MemoryManager.h>

#include <string>

#if defined(Guestbook_EXPORTS)  // CMake defines it while it compiles this DLL
#define GUESTBOOK_API __declspec(dllexport)
#else
#define GUESTBOOK_API __declspec(dllimport)
#endif

class GUESTBOOK_API Guestbook
    : public Quend::Framework::Management::MemoryManager::IRegisteredObject {
 public:
    Guestbook();
    Guestbook(const Guestbook&) = delete;
    Guestbook& operator=(const Guestbook&) = delete;
    ~Guestbook() override;

    void sign(const std::string& name);
    const std::string& names() const;

 private:
    std::string names_;
};
