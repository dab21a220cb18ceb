// A module: signs the guest book when it starts, and reads it when it stops. It is built twice,
// under two names.
#include <Quend/Framework/ObjectReference.h>

#include <cstdio>
#include <exception>
#include <optional>

#include "Guestbook.h"

using Quend::Framework::Exceptions::FrameworkException;
using Quend::Framework::Management::MemoryManager::ObjectReference;

namespace {

std::optional<ObjectReference<Guestbook>> guestbook;

}  // namespace

extern "C" __declspec(dllexport) bool start() try {
    guestbook.emplace("guest book", makeGuestbook);  // the first caller creates it
    (*guestbook)->sign(GUEST);
    std::printf("%s: signed, the book says: %s\n", GUEST, (*guestbook)->names().c_str());
    return true;
} catch (const FrameworkException& error) {
    std::printf("%s: %s\n", GUEST, error.getMessage().c_str());
    return false;
} catch (const std::exception& error) {
    std::printf("%s: %s\n", GUEST, error.what());
    return false;
}

extern "C" __declspec(dllexport) void stop() {
    if (!guestbook) {
        return;  // start() failed
    }
    std::printf("%s: leaving, the book says: %s\n", GUEST, (*guestbook)->names().c_str());
    guestbook.reset();  // the last caller destroys it
}
