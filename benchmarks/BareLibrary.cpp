// A DLL that throws what readProperty throws, with the same text, and does nothing else.
#include <Quend/Framework/Exceptions.h>

#include <cstdlib>
#include <string>

using Quend::Framework::Exceptions::UnexistentProperty;

namespace {

UnexistentProperty unexistent(const std::wstring& name) {
    const std::wstring text = L"Trying to read unexistent property: " + name;
    std::string narrow(4 * (text.size() + 1), '\0');
    std::size_t size = 0;
    wcstombs_s(&size, narrow.data(), narrow.size(), text.c_str(), narrow.size());
    return UnexistentProperty(narrow.c_str());
}

}  // namespace

extern "C" __declspec(dllexport) void throwUnexistentProperty(const std::wstring& name) {
    throw unexistent(name);
}
