#include <Quend/Framework/Framework.h>
#include <Quend/Framework/ObjectReference.h>

#include <cstdio>
#include <string>

using namespace Quend::Framework;
using Management::MemoryManager::IRegisteredObject;
using Management::MemoryManager::ObjectReference;

namespace {

struct Visitors : IRegisteredObject {
    int count = 0;
};

}  // namespace

int main() try {
    // An object shared by name: the first reference creates it, the last one destroys it.
    const ObjectReference<Visitors> mine("visitors");
    const ObjectReference<Visitors> same("visitors");  // as another module would ask
    mine->count = 3;
    std::printf("%d visitors\n", same->count);

    // A named text that every module of the process can read.
    auto* properties = Framework::propertyManager();
    properties->setProperty(L"width", L"80");
    std::printf("%d columns\n", std::stoi(properties->readProperty(L"width")));
    properties->readProperty(L"height");                 // nobody has set it
} catch (const Exceptions::FrameworkException& error) {  // not a std::exception
    std::puts(error.getMessage().c_str());  // Trying to read unexistent property: height
}
