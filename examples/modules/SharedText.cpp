#include "SharedText.h"

#include <iostream>

using namespace Quend::Framework::Management::MemoryManager;

SharedText::~SharedText() {
    std::cout << "[shared text] the last reference was given back: the registry destroys me\n";
}

IRegisteredObject* makeSharedText() {
    std::cout << "[shared text] this is the first reference: the registry creates me\n";
    return new SharedText;
}
