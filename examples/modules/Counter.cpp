// Finds what another module has registered, counts it, and grows memory that another module
// allocated.
#include <cctype>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>

#include "Module.h"
#include "SharedText.h"

using namespace Quend::Framework::Management::MemoryManager;
using Quend::Framework::Exceptions::FrameworkException;

namespace {

void count(SharedText& text) {
    bool isInWord = false;
    for (std::size_t i = 0; i < text.size; ++i) {
        const auto byte = static_cast<unsigned char>(text.bytes[i]);
        const bool isSpace = std::isspace(byte) != 0;
        text.words += !isSpace && !isInWord ? 1U : 0U;
        isInWord = !isSpace;
        text.lines += byte == '\n' ? 1U : 0U;
    }
    text.lines += text.bytes[text.size - 1] == '\n' ? 0U : 1U;  // a last line without an end
}

}  // namespace

MODULE_EXPORT bool startModule(const char* /*textFile*/, const char* /*settingsFile*/) try {
    // Nothing to count without a reader, so an empty text is not created in its place.
    const auto text = ObjectReference<SharedText>::existing(kSharedTextName);
    if (!text) {
        std::cerr << "[counter] no module has registered \"" << kSharedTextName << "\"\n";
        return false;
    }
    std::cout << "[counter] found \"" << kSharedTextName << "\" by its name\n";
    count(*text);

    const std::string result =
        std::to_string(text->lines) + " lines, " + std::to_string(text->words) + " words";
    void* const grown = reallocate(text->bytes.get(), text->size + result.size());
    if (grown == nullptr) {
        std::cerr << "[counter] no memory for the result\n";
        return false;
    }
    static_cast<void>(text->bytes.release());  // `grown` has taken its place
    text->bytes.reset(static_cast<char*>(grown));
    std::memcpy(text->bytes.get() + text->size, result.data(), result.size());
    std::cout << "[counter] grew the reader's memory by " << result.size()
              << " bytes and wrote the result behind the text: " << result << '\n';
    return true;
} catch (const FrameworkException& error) {
    return failed(error.getMessage().c_str());
} catch (const std::exception& error) {
    return failed(error.what());
}

MODULE_EXPORT void stopModule() {
    std::cout << "[counter] gave its reference back as soon as it had counted\n";
}
