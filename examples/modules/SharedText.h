// The object that the modules share through the object registry.
//
// Its code lives in a DLL of its own, which every module that takes a reference imports, and which
// therefore stays loaded as long as any of them does. If the class were part of the module that
// creates the object, unloading that module would crash whoever releases the object later.
#pragma once

#include <Quend/Framework/ObjectReference.h>

#include <cstddef>
#include <memory>

#if defined(SharedText_EXPORTS)
#define SHARED_TEXT_API __declspec(dllexport)
#else
#define SHARED_TEXT_API __declspec(dllimport)
#endif

constexpr const char* kSharedTextName = "demo.text";

struct SHARED_TEXT_API SharedText : Quend::Framework::Management::MemoryManager::IRegisteredObject {
    SharedText() = default;
    SharedText(const SharedText&) = delete;
    SharedText& operator=(const SharedText&) = delete;
    ~SharedText() override;

    // On the common heap, so any module may grow or free it; null when there is none.
    std::unique_ptr<char[], Quend::Framework::Management::MemoryManager::BlockDeleter> bytes;
    std::size_t size = 0;

    std::size_t lines = 0;
    std::size_t words = 0;
};

// The factory to register it with.
SHARED_TEXT_API Quend::Framework::Management::MemoryManager::IRegisteredObject* makeSharedText();
