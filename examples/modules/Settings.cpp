// Puts the settings of a file, lines of `name = value`, into the property store for everybody.
#include <Quend/Framework/Framework.h>

#include <windows.h>

#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Module.h"

using Quend::Framework::Exceptions::FrameworkException;
using Quend::Framework::Framework::propertyManager;

namespace {

std::vector<std::wstring> namesSet;

std::wstring trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t\r");
    const int size = static_cast<int>(last - first + 1);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data() + first, size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(units));
    return wide;
}

void clearAll() {
    for (const std::wstring& name : namesSet) {
        if (propertyManager()->hasProperty(name)) {
            propertyManager()->clearProperty(name);
        }
    }
    namesSet.clear();
}

}  // namespace

MODULE_EXPORT bool startModule(const char* /*textFile*/, const char* settingsFile) try {
    std::ifstream file(settingsFile);
    if (!file) {
        std::cerr << "[settings] cannot use " << settingsFile << ": no such file\n";
        return false;
    }
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        const std::wstring content = trimmed(line);
        if (content.empty() || content.front() == L'#') {
            continue;
        }
        const auto equals = line.find('=');
        const std::wstring name = trimmed(line.substr(0, equals));
        if (equals == std::string::npos || name.empty()) {
            std::cerr << "[settings] " << settingsFile << ", line " << number
                      << ": expected name = value\n";
            clearAll();
            return false;
        }
        propertyManager()->setProperty(name, trimmed(line.substr(equals + 1)));
        namesSet.push_back(name);
    }
    std::cout << "[settings] set " << namesSet.size() << " properties from the settings file\n";
    return true;
} catch (const FrameworkException& error) {
    return failed(error.getMessage().c_str());
} catch (const std::exception& error) {
    return failed(error.what());
}

MODULE_EXPORT void stopModule() {
    std::cout << "[settings] clears its properties\n";
    clearAll();
}
