// Stands between the program and Windows: a hook gets every call of one function that the program
// imports, and answers in its place or asks Windows. So tests note calls, fail one, or play a part.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "support/ImportPatch.h"

namespace tests {

// The name of a function as a template argument: functions of one type are told apart by it.
template <std::size_t Size>
struct FunctionName {
    // NOLINTNEXTLINE(google-explicit-constructor): so that "ReadFile" is one
    constexpr FunctionName(const char (&name)[Size]) { std::copy_n(name, Size, text); }
    char text[Size]{};
};

template <FunctionName name, typename Function, typename Instead>
class Hook;
template <FunctionName name, typename Result, typename... Arguments, typename Instead>
class Hook<name, Result WINAPI(Arguments...), Instead> {
 public:
    explicit Hook(Instead function) : instead(std::move(function)) {}

 private:
    static Result WINAPI call(Arguments... arguments) {
        auto* const real = current->patch.template original<Result WINAPI(Arguments...)>();
        return current->instead(real, arguments...);
    }

    void* callHere() {
        current = this;
        return reinterpret_cast<void*>(&call);
    }

    static inline Hook* current = nullptr;
    Instead instead;
    ImportPatch patch{name.text, callHere()};
};

// While the result lives, `instead(real, arguments...)` is called for the function `name`, on
// whatever thread; `real` is the function itself. As in
//   const auto hook = tests::hook<"Sleep", decltype(Sleep)>([](auto real, DWORD ms) { real(ms); });
template <FunctionName name, typename Function, typename Instead>
Hook<name, Function, Instead> hook(Instead instead) {
    return Hook<name, Function, Instead>(std::move(instead));
}

}  // namespace tests
