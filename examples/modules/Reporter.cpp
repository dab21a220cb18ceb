// Takes a reference of its own, outlives the module that created the object, and frees memory
// that others have allocated and grown.
#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/ReadPropertyOr.h>

#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "Module.h"
#include "SharedText.h"

using namespace Quend::Framework::Management::MemoryManager;
using Quend::Framework::Exceptions::FrameworkException;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::randomNumber;
using Quend::Framework::Framework::readPropertyOr;

namespace {

std::optional<ObjectReference<SharedText>> sharedText;

// Shows `?` for anything but ASCII, so that the console's encoding does not matter.
std::string printable(const std::wstring& text) {
    std::string result;
    for (const wchar_t unit : text) {
        result += unit >= L' ' && unit <= L'~' ? static_cast<char>(unit) : '?';
    }
    return result;
}

void show(const wchar_t* name) {
    try {
        const std::wstring& value = propertyManager()->readProperty(name);
        std::cout << "[reporter] property \"" << printable(name) << "\" is: " << printable(value)
                  << '\n';
    } catch (const FrameworkException& error) {
        std::cout << "[reporter] caught: " << error.getMessage() << '\n';
    }
}

}  // namespace

MODULE_EXPORT bool startModule(const char* /*textFile*/, const char* /*settingsFile*/) {
    sharedText.emplace(kSharedTextName, makeSharedText);
    std::cout << "[reporter] took a second reference; the object existed, so none was created\n";
    return true;
}

MODULE_EXPORT void stopModule() {
    if (!sharedText) {
        return;  // startModule() failed
    }
    SharedText& text = **sharedText;
    show(L"report.title");
    show(L"report.footer");
    std::cout << "[reporter] with a fallback: "
              << printable(readPropertyOr(L"report.footer", L"no footer")) << '\n';
    const std::string_view whole(text.bytes.get(), text.size);
    std::cout << "[reporter] the text begins: " << whole.substr(0, whole.find_first_of("\r\n"))
              << '\n'
              << "[reporter] it has " << text.lines << " lines, " << text.words << " words and "
              << text.size << " bytes\n"
              << "[reporter] three random numbers for today:";
    for (int i = 0; i < 3; ++i) {
        std::cout << ' ' << randomNumber();
    }
    text.bytes.reset();
    std::cout << "\n[reporter] freed the text's memory, gives its reference back\n";
    sharedText.reset();
}
