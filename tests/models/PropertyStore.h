// The property store against a map.
#pragma once

#include "models/Input.h"
#include "properties/PropertyManagerImpl.h"

namespace tests {

inline void checkPropertyStore(Input input) {
    using namespace std::string_literals;
    struct Name {
        std::wstring wide;
        const char* narrow;  // what a message says of it; null if it cannot be converted
    };
    const std::initializer_list<Name> names = {
        {L"", ""},           {L"a", "a"},
        {L"ab", "ab"},       {L"A", "A"},
        {L"a\0"s, "a"},      {L"a\0\x416"s, "a"},
        {L"\x416", nullptr}, {L"beyond a short string", "beyond a short string"}};
    struct Value {
        std::wstring text;
        const std::wstring* place = nullptr;  // where the store keeps it
    };
    std::map<std::wstring, Value> model;
    Quend::Framework::Management::PropertyManagerImpl store;

    while (!input.isAtEnd()) {
        const auto chosen = input.oneOf(names);
        const std::wstring& name = chosen.wide;
        const std::wstring other = input.oneOf(names).wide;
        const char operation = input.oneOf({'s', 'r', 'c', 'e'});
        const auto complaint = [&](const std::string& text) {
            return model.contains(name)       ? "none"
                   : chosen.narrow == nullptr ? ""
                                              : text + chosen.narrow;
        };
        if (operation == 's' || (operation == 'e' && model.contains(other))) {
            // What the store itself holds may be set, too.
            const Value value = operation == 's' ? Value{other, &other} : model.at(other);
            store.setProperty(name, *value.place);
            model[name] = {value.text, &store.readProperty(name)};
        } else if (operation == 'r') {
            MODEL_CHECK(complaintOf([&] { store.readProperty(name); }) ==
                        complaint("Trying to read unexistent property: "));
        } else if (operation == 'c') {
            MODEL_CHECK(complaintOf([&] { store.clearProperty(name); }) ==
                        complaint("Trying to clear an unexistent property: "));
            model.erase(name);
        }
        for (const auto& [each, eachNarrow] : names) {
            const auto held = model.find(each);
            MODEL_CHECK(store.hasProperty(each) == (held != model.end()));
            MODEL_CHECK(held == model.end() || (&store.readProperty(each) == held->second.place &&
                                                *held->second.place == held->second.text));
        }
    }
}

}  // namespace tests
