// The object that the modules share through the object registry.
//
// Its destructor lives in a DLL of its own, with the factory. Every module that takes a reference
// imports that factory, so the DLL stays loaded as long as any of them does. If the destructor were
// part of the module that creates the object, unloading that module would crash whoever releases
// the object later. Nothing but the factory is exported.
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

struct SharedText : Quend::Framework::Management::MemoryManager::IRegisteredObject {
    // On the common heap, so any module may grow or free it; null when there is none.
    std::unique_ptr<char[], Quend::Framework::Management::MemoryManager::BlockDeleter> bytes;
    std::size_t size = 0;

    std::size_t lines = 0;
    std::size_t words = 0;

 protected:
    SharedText() = default;  // only the factory creates one
};

// The factory to register it with.
SHARED_TEXT_API Quend::Framework::Management::MemoryManager::IRegisteredObject* makeSharedText();
