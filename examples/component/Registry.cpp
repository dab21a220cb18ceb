// Reads and writes the Windows registry: prints a tree of keys, then makes one and deletes it.
#include "Quend/RegistryAccess/Registry.h"

#include <algorithm>
#include <iostream>

#include "Quend/RegistryAccess/RegistryErrors.h"
#include "Steps.h"

namespace {

using Quend::RegistryAccess::Registry;

// What the locale cannot represent is read as NUL.
template <typename Text>
std::string printable(const Text& text) {
    std::string result(text.begin(), text.end());
    std::replace(result.begin(), result.end(), '\0', '?');
    return result;
}

// As a number if it is one, else as text.
std::string describeValue(const Registry& key, const std::string& valueName) {
    try {
        return std::to_string(key.getIntValue(valueName));
    } catch (const Registry::OpenError&) {
        return '"' + printable(key.getStringValue(valueName)) + '"';
    }
}

void printTree(const Registry& key, const Arguments& valueNames, const std::string& indent = "  ") {
    std::cout << indent << printable(key.getName()) << '\n';
    const std::string inner = indent + "  ";
    for (const std::string& valueName : valueNames) {
        if (key.hasValue(valueName)) {
            std::cout << inner << valueName << " = " << describeValue(key, valueName) << '\n';
        }
    }
    for (const Registry& subKey : key.getSubKeys()) {
        if (subKey.getName().front() == '\0') {
            // It is `key` itself, whose tree would never end.
            std::cout << inner << "(a name that the locale cannot represent)\n";
        } else {
            printTree(subKey, valueNames, inner);
        }
    }
}

void showScratchTree() {
    const Registry software(HKEY_CURRENT_USER, "Software");
    const std::string name = "QuendFrameworkExample";
    std::cout << "Making a tree below HKEY_CURRENT_USER\\Software:\n";
    const Registry scratch = software.createSubKey(name);
    const std::string greeting = "hello, registry";
    scratch.setStringValue("Greeting", {greeting.begin(), greeting.end()});
    scratch.setIntValue("Answer", 42);
    scratch.setIntValue("Mistake", 43);
    scratch.deleteValue("Mistake");
    scratch.createSubKey(R"(Colours\Warm)").setIntValue("Answer", 0xff8000);
    scratch.createSubKey("Shapes");
    printTree(scratch, {"Greeting", "Answer", "Mistake"});

    std::cout << "Deleting it, then opening it again:\n";
    software.deleteSubKey(name);
    try {
        software.openSubKey(name);
    } catch (const Registry::OpenError& error) {
        std::cout << "  " << error.what() << '\n';
    }
}

}  // namespace

int showRegistry(const Arguments& arguments) {
    const std::string path = arguments.empty() ? "Environment" : arguments[0];
    const Arguments valueNames = arguments.empty()
                                     ? Arguments{"TEMP", "TMP"}
                                     : Arguments(arguments.begin() + 1, arguments.end());
    try {
        std::cout << "The tree of HKEY_CURRENT_USER\\" << path << ":\n";
        printTree(Registry(HKEY_CURRENT_USER, path), valueNames);
        showScratchTree();
    } catch (const Registry::GenericRegistryError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
