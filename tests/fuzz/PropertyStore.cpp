// The property store against a map, one operation after the other from the input.
#include <functional>
#include <map>

#include <Quend/Framework/Exceptions.h>

#include "Fuzz.h"
#include "properties/PropertyManagerImpl.h"

namespace {

using namespace Quend::Framework;
using namespace std::string_literals;

// The complaint about a missing property in the C locale: cut at a NUL, empty if the name holds
// anything but ASCII.
std::string complaint(std::string text, const std::wstring& name) {
    for (const wchar_t unit : name.substr(0, name.find(L'\0'))) {
        if (unit >= 0x80) {
            return "";
        }
        text += static_cast<char>(unit);
    }
    return text;
}

std::string complaintOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Exceptions::UnexistentProperty& error) {
        return error.getMessage();
    }
    return "none";
}

struct Value {
    std::wstring text;
    const std::wstring* place = nullptr;  // where the store keeps it
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    Management::PropertyManagerImpl store;
    std::map<std::wstring, Value> model;

    while (!input.isAtEnd()) {
        const std::wstring name = input.word(L"aA\0\x416"s, 5);
        const std::wstring other = input.word(L"aA\0\x416"s, 5);
        const auto set = [&](const std::wstring& value, const std::wstring& expected) {
            store.setProperty(name, value);
            model[name] = {expected, &store.readProperty(name)};
        };
        switch (input.below(4)) {
            case 0:
                set(other, other);
                break;
            case 1:  // with what the store itself holds
                if (const auto found = model.find(other); found != model.end()) {
                    set(*found->second.place, std::wstring(found->second.text));
                }
                break;
            case 2:
                FUZZ_CHECK(complaintOf([&] { store.clearProperty(name); }) ==
                           (model.erase(name) == 1
                                ? "none"
                                : complaint("Trying to clear an unexistent property: ", name)));
                break;
            default:
                FUZZ_CHECK(complaintOf([&] { store.readProperty(name); }) ==
                           (model.contains(name)
                                ? "none"
                                : complaint("Trying to read unexistent property: ", name)));
        }
        FUZZ_CHECK(store.hasProperty(name) == model.contains(name));
        for (const auto& [heldName, value] : model) {
            FUZZ_CHECK(&store.readProperty(heldName) == value.place);
            FUZZ_CHECK(*value.place == value.text);
        }
    }
    return 0;
}
