// Creates the shared object and reads the file into memory of the common heap.
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>

#include "Module.h"
#include "SharedText.h"

using namespace Quend::Framework::Management::MemoryManager;
using Quend::Framework::Exceptions::FrameworkException;

namespace {

std::optional<ObjectReference<SharedText>> sharedText;

// Returns what is wrong with the file, or null.
const char* readInto(SharedText& text, const char* path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) {
        return "no such file, or it cannot be read";
    }
    const std::streamoff size = file.tellg();
    if (size <= 0) {
        return size == 0 ? "the file is empty: there is nothing to count" : "not a regular file";
    }
    text.size = static_cast<std::size_t>(size);
    text.bytes.reset(static_cast<char*>(allocate(text.size)));
    if (text.bytes == nullptr) {
        return "the file does not fit into memory";
    }
    file.seekg(0);
    if (!file.read(text.bytes.get(), size)) {
        return "reading it failed half-way";
    }
    return std::memchr(text.bytes.get(), '\0', text.size) == nullptr
               ? nullptr
               : "it holds NUL bytes: a binary file, not a text";
}

}  // namespace

MODULE_EXPORT bool startModule(const char* textFile, const char* /*settingsFile*/) try {
    sharedText.emplace(kSharedTextName, makeSharedText);
    std::cout << "[reader] registered \"" << kSharedTextName << "\" and holds one reference\n";
    if (const char* const problem = readInto(**sharedText, textFile)) {
        std::cerr << "[reader] cannot use " << textFile << ": " << problem << '\n';
        sharedText.reset();
        return false;
    }
    std::cout << "[reader] read " << (*sharedText)->size
              << " bytes into memory that it allocated\n";
    return true;
} catch (const FrameworkException& error) {
    return failed(error.getMessage().c_str());
} catch (const std::exception& error) {
    return failed(error.what());
}

MODULE_EXPORT void stopModule() {
    std::cout << "[reader] gives its reference back\n";
    sharedText.reset();
}
