// The property store against a map.
#pragma once

#include "models/Input.h"
#include "properties/PropertyManagerImpl.h"
#include "support/Complaint.h"

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
    enum Operation { kSet, kRead, kClear, kSetToAnothersValue };
    std::map<std::wstring, Value> model;
    Quend::Framework::Management::PropertyManagerImpl store;

    while (!input.isAtEnd()) {
        const auto chosen = input.oneOf(names);
        const std::wstring& name = chosen.wide;
        const std::wstring other = input.oneOf(names).wide;
        const Operation operation = input.oneOf({kSet, kRead, kClear, kSetToAnothersValue});
        const auto complaint = [&](const std::string& text) {
            if (model.contains(name)) {
                return std::string("none");
            }
            return chosen.narrow == nullptr ? "" : text + chosen.narrow;
        };
        if (operation == kSet) {
            store.setProperty(name, other);
            model[name] = {other, &store.readProperty(name)};
        } else if (operation == kSetToAnothersValue && model.contains(other)) {
            const Value value = model.at(other);
            store.setProperty(name, *value.place);
            model[name] = {value.text, &store.readProperty(name)};
        } else if (operation == kRead) {
            MODEL_CHECK(complaintOf([&] { store.readProperty(name); }) ==
                        complaint("Trying to read unexistent property: "));
        } else if (operation == kClear) {
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
