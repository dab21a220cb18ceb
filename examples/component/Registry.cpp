#include "Quend/RegistryAccess/Registry.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "Quend/RegistryAccess/RegistryErrors.h"
#include "Steps.h"

namespace {

using Quend::RegistryAccess::Registry;

const char* const kDefaultKey = R"(HKEY_CURRENT_USER\Environment)";
const char* const kScratchKey = "QuendFrameworkExample";
const Arguments kDefaultValues = {"TEMP", "TMP"};

struct Root {
    const char* name;
    const char* shortName;
    HKEY key;
};
const Root kRoots[] = {
    {"HKEY_CLASSES_ROOT", "HKCR", HKEY_CLASSES_ROOT},
    {"HKEY_CURRENT_USER", "HKCU", HKEY_CURRENT_USER},
    {"HKEY_LOCAL_MACHINE", "HKLM", HKEY_LOCAL_MACHINE},
    {"HKEY_USERS", "HKU", HKEY_USERS},
};

const Root* findRoot(const std::string& path) {
    const std::string name = path.substr(0, path.find('\\'));
    const auto* const found =
        std::find_if(std::begin(kRoots), std::end(kRoots),
                     [&](const Root& root) { return name == root.name || name == root.shortName; });
    return found == std::end(kRoots) ? nullptr : found;
}

// The message alone: what() puts the class and the place before it.
std::string messageOf(const Registry::GenericRegistryError& error) {
    const std::string text = error.what();
    const auto place = text.find("): ");
    return place == std::string::npos ? text : text.substr(place + 3);
}

// What the locale cannot represent is read as NUL.
template <typename Text>
std::string printable(const Text& text) {
    std::string result(text.begin(), text.end());
    std::replace(result.begin(), result.end(), '\0', '?');
    return result;
}

// As a number if it is a DWORD, else as text; the reason if it can be read as neither.
std::string describeValue(const Registry& key, const std::string& valueName) {
    try {
        return std::to_string(key.getIntValue(valueName));
    } catch (const Registry::OpenError&) {
    }
    try {
        return '"' + printable(key.getStringValue(valueName)) + '"';
    } catch (const Registry::GenericRegistryError& error) {
        return messageOf(error);
    }
}

void printTree(const Registry& key, const Arguments& valueNames, const std::string& indent = "") {
    std::cout << indent << printable(key.getName()) << '\n';
    const std::string inner = indent + "  ";
    for (const std::string& valueName : valueNames) {
        if (key.hasValue(valueName)) {
            std::cout << inner << valueName << " = " << describeValue(key, valueName) << '\n';
        }
    }
    try {
        for (const Registry& subKey : key.getSubKeys()) {
            if (subKey.getName().front() == '\0') {
                // It is `key` itself, whose tree would never end.
                std::cout << inner << "(a name that the locale cannot represent)\n";
                continue;
            }
            printTree(subKey, valueNames, inner);
        }
    } catch (const Registry::GenericRegistryError& error) {
        std::cout << inner << messageOf(error) << '\n';  // and on with the next key
    }
}

void showScratchTree() {
    const Registry software(HKEY_CURRENT_USER, "Software");
    const std::string name = kScratchKey;
    std::cout << "Making a tree below HKEY_CURRENT_USER\\Software:\n";
    {
        const Registry scratch = software.createSubKey(name);
        const std::string greeting = "hello, registry";
        scratch.setStringValue("Greeting", {greeting.begin(), greeting.end()});
        scratch.setIntValue("Answer", 41);
        scratch.setIntValue("Answer", 42);
        scratch.setIntValue("Mistake", 43);
        scratch.deleteValue("Mistake");
        scratch.createSubKey(R"(Colours\Warm)").setIntValue("Answer", 0xff8000);
        scratch.createSubKey("Shapes");
        printTree(scratch, {"Greeting", "Answer", "Mistake"}, "  ");
    }
    std::cout << "Deleting it, then opening it again:\n";
    software.deleteSubKey(name);
    try {
        software.openSubKey(name);
        std::cout << "  it is still there\n";
    } catch (const Registry::OpenError& error) {
        std::cout << "  " << name << ": " << messageOf(error) << '\n';
    }
}

}  // namespace

int showRegistry(const Arguments& arguments) {
    const std::string path = arguments.empty() ? kDefaultKey : arguments[0];
    const Arguments valueNames =
        arguments.empty() ? kDefaultValues : Arguments(arguments.begin() + 1, arguments.end());
    const Root* const root = findRoot(path);
    if (root == nullptr) {
        std::cerr << path << ": a key begins with one of";
        for (const Root& known : kRoots) {
            std::cerr << ' ' << known.name << " (" << known.shortName << ')';
        }
        std::cerr << '\n';
        return 1;
    }
    try {
        const auto backslash = path.find('\\');
        const Registry key(root->key,
                           backslash == std::string::npos ? "" : path.substr(backslash + 1));
        std::cout << "The tree of " << path << ":\n";
        printTree(key, valueNames);
    } catch (const Registry::GenericRegistryError& error) {
        std::cerr << path << ": " << messageOf(error) << '\n';
        return 1;
    }
    try {
        showScratchTree();
    } catch (const Registry::GenericRegistryError& error) {
        std::cerr << "HKEY_CURRENT_USER\\Software\\" << kScratchKey << ": " << messageOf(error)
                  << '\n';
        return 1;
    }
    return 0;
}
