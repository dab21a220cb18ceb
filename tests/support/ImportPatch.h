// Replaces a function that a module imports, for as long as the object lives: the way to make
// Windows fail on purpose, and to count what is asked of it, in an unchanged binary.
#pragma once

#include <windows.h>

namespace tests {

class ImportPatch {
 public:
    // `name` is the imported function's, as in "RegOpenKeyW"; `module` null means the program.
    // A name that the module does not import is a failure of the test.
    ImportPatch(const char* name, void* replacement, HMODULE module = nullptr);
    ~ImportPatch() { exchange(); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // The function that was there before, to be called through.
    template <typename Function>
    Function* original() const {
        return reinterpret_cast<Function*>(other);
    }

 private:
    void exchange();

    void** slot;
    void* other;
};

}  // namespace tests
