#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>

#include <cstdio>

int main() try {
    auto* properties = Quend::Framework::Framework::propertyManager();
    properties->setProperty(L"width", L"80");  // every module of the process now reads 80
    std::printf("%ls\n", properties->readProperty(L"width").c_str());
    properties->readProperty(L"height");  // nobody has set it
} catch (const Quend::Framework::Exceptions::FrameworkException& error) {
    std::puts(error.getMessage().c_str());  // Trying to read unexistent property: height
}
