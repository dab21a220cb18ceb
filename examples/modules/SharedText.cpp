#include "SharedText.h"

#include <iostream>

using namespace Quend::Framework::Management::MemoryManager;

namespace {

struct AnnouncedText final : SharedText {
    AnnouncedText() {
        std::cout << "[shared text] this is the first reference: the registry creates me\n";
    }
    ~AnnouncedText() override {
        std::cout << "[shared text] the last reference was given back: the registry destroys me\n";
    }
};

}  // namespace

IRegisteredObject* makeSharedText() { return new AnnouncedText; }
