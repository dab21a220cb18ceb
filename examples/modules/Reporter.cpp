// Takes a reference of its own, outlives the module that created the object, and frees memory
// that others have allocated and grown.
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/ReadPropertyOr.h>

#include <windows.h>

#include <exception>
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

std::string utf8(const std::wstring& text) {
    const int units = static_cast<int>(text.size());
    std::string bytes(3 * text.size(), '\0');  // a unit takes three at most
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

// Shows every character on a console, and writes UTF-8 into a file or a pipe.
void print(const std::wstring& text) {
    std::cout.flush();
    auto* const output = GetStdHandle(STD_OUTPUT_HANDLE);
    const auto units = static_cast<DWORD>(text.size());
    DWORD written = 0;
    if (WriteConsoleW(output, text.data(), units, &written, nullptr) == 0) {  // not a console
        std::cout << utf8(text) << std::flush;
    }
}

void show(const std::wstring& name) {
    try {
        const std::wstring& value = propertyManager()->readProperty(name);
        print(L"[reporter] property \"" + name + L"\" is: " + value + L"\n");
    } catch (const FrameworkException& error) {
        std::cout << "[reporter] caught: " << error.getMessage() << '\n';
    }
}

}  // namespace

MODULE_EXPORT bool startModule(const char* /*textFile*/, const char* /*settingsFile*/) try {
    sharedText.emplace(kSharedTextName, makeSharedText);
    std::cout << "[reporter] took a second reference; the object existed, so none was created\n";
    return true;
} catch (const FrameworkException& error) {
    return failed(error.getMessage().c_str());
} catch (const std::exception& error) {
    return failed(error.what());
}

MODULE_EXPORT void stopModule() {
    if (!sharedText) {
        return;  // startModule() failed
    }
    SharedText& text = **sharedText;
    show(L"report.title");
    show(L"report.footer");
    print(L"[reporter] with a fallback: " + readPropertyOr(L"report.footer", L"no footer") + L"\n");
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
