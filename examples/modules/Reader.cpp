// Creates the shared object and reads the file into memory of the common heap.
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>

#include "Module.h"
#include "SharedText.h"

using namespace Quend::Framework::Management::MemoryManager;

namespace {

// Says what is wrong with the file, or null.
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
    text.bytes = static_cast<char*>(allocate(text.size));
    if (text.bytes == nullptr) {
        return "the file does not fit into memory";
    }
    file.seekg(0);
    if (!file.read(text.bytes, size)) {
        return "reading it failed half-way";
    }
    return std::memchr(text.bytes, '\0', text.size) == nullptr
               ? nullptr
               : "it holds NUL bytes: a binary file, not a text";
}

}  // namespace

MODULE_EXPORT bool startModule(const char* textFile, const char* /*settingsFile*/) {
    auto& text = static_cast<SharedText&>(*registerObject(kSharedTextName, makeSharedText));
    std::cout << "[reader] registered \"" << kSharedTextName << "\" and hold one reference\n";
    if (const char* const problem = readInto(text, textFile)) {
        std::cerr << "[reader] cannot use " << textFile << ": " << problem << '\n';
        unregisterObject(kSharedTextName);
        return false;
    }
    std::cout << "[reader] read " << text.size << " bytes into memory that I allocated\n";
    return true;
}

MODULE_EXPORT void stopModule() {
    std::cout << "[reader] giving my reference back\n";
    unregisterObject(kSharedTextName);
}
