// A DLL that throws what readProperty throws, and does nothing else.
#include <Quend/Framework/Exceptions.h>

extern "C" __declspec(dllexport) void throwUnexistentProperty(const char* text) {
    throw Quend::Framework::Exceptions::UnexistentProperty(text);
}
