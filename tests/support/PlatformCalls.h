// What stands between a module and Windows: its imports, which the tests replace to note calls, to
// fail one or to play a part, in an unchanged binary; and its exports.
#pragma once

#include "support/Test.h"

namespace tests {

// While it lives, `module`, or the program if null, calls `replacement` for what it imports as
// `name`. A name that is not imported fails the test.
class ImportPatch {
 public:
    ImportPatch(const char* name, void* replacement, HMODULE module = nullptr);
    ~ImportPatch() { exchange(); }
    ImportPatch(ImportPatch&&) = delete;

    void* original() const { return other; }

 private:
    void exchange();

    void** slot;
    void* other;
};

// While it lives, `instead(real, arguments...)` answers each call of the function `name`, on any
// thread; `real` is that function, to call through. It is given itself as well, for its type. As in
//   const tests::Hook sleep("Sleep", Sleep, [](auto real, DWORD ms) { real(2 * ms); });
template <typename Instead, typename Result, typename... Arguments>
class Hook {
 public:
    using Function = Result WINAPI(Arguments...);

    Hook(const char* name, Function* /*function*/, Instead function, HMODULE module = nullptr)
        : instead(std::move(function)), patch(name, callHere(), module) {}

 private:
    static Result WINAPI call(Arguments... arguments) {
        return current->instead(reinterpret_cast<Function*>(current->patch.original()),
                                arguments...);
    }
    void* callHere() {
        current = this;
        return reinterpret_cast<void*>(&call);
    }

    static inline Hook* current = nullptr;
    Instead instead;
    ImportPatch patch;
};

// By way of void*, as GetProcAddress returns a function of another type.
template <typename Function>
Function* exportOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace tests
