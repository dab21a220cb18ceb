#pragma once

#include <Quend/Framework/Exceptions.h>

#include <functional>
#include <string>

namespace tests {

// The text of the library's exception that `call` throws, or "none".
inline std::string complaintOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Quend::Framework::Exceptions::FrameworkException& error) {
        return error.getMessage();
    }
    return "none";
}

}  // namespace tests
