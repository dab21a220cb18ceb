#include "SharedText.h"

#include <iostream>

using namespace Quend::Framework::Management::MemoryManager;

SharedText::~SharedText() {
    deallocate(bytes);
    std::cout << "[shared text] the last reference was given back: the registry destroys me\n";
}

IRegisteredObject* makeSharedText() {
    std::cout << "[shared text] somebody is the first to ask for me: the registry creates me\n";
    return new SharedText;
}
