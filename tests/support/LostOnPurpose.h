#pragma once

#if defined(__has_feature)  // clang
#define TESTS_FIND_LEAKS __has_feature(address_sanitizer)
#elif defined(__SANITIZE_ADDRESS__) && defined(__linux__)
#define TESTS_FIND_LEAKS 1
#else
#define TESTS_FIND_LEAKS 0
#endif
#if TESTS_FIND_LEAKS
#include <sanitizer/lsan_interface.h>
#else
inline void __lsan_disable() {}
inline void __lsan_enable() {}
#endif

namespace tests {

// While one with `isLost` lives, the leak check overlooks what this thread allocates: the contract
// of the object registry states which entries and objects are lost.
class LostOnPurpose {
 public:
    explicit LostOnPurpose(bool lost) : isLost(lost) { isLost ? __lsan_disable() : void(); }
    ~LostOnPurpose() { isLost ? __lsan_enable() : void(); }
    LostOnPurpose(LostOnPurpose&&) = delete;

 private:
    bool isLost;
};

}  // namespace tests
