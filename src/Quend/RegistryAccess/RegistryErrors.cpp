#include "Quend/RegistryAccess/RegistryErrors.h"

#include <cstdlib>
#include <locale>
#include <new>
#include <sstream>
#include <typeinfo>
#include <utility>

#ifndef _MSC_VER
#include <cxxabi.h>
#endif

namespace Quend::RegistryAccess {
namespace {

// As in "class Quend::RegistryAccess::Registry::NotFound", whatever the compiler.
std::string readableName(const std::type_info& type) {
#ifdef _MSC_VER
    return type.name();
#else
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr), &std::free);
    if (demangled == nullptr) {
        throw std::bad_alloc();  // the name is well-formed, so there is no other reason
    }
    return std::string("class ") + demangled.get();
#endif
}

}  // namespace

Registry::GenericRegistryError::GenericRegistryError(std::string message, std::int32_t line,
                                                     const char* file)
    : record(new Record{std::move(message), file, line, {}}) {}

Registry::GenericRegistryError::GenericRegistryError(const GenericRegistryError& other)
    : record(new Record(*other.record)) {}

Registry::GenericRegistryError::~GenericRegistryError() = default;

const char* Registry::GenericRegistryError::what() const noexcept {
    try {
        if (record->whatText.empty()) {
            std::ostringstream text;
            // Without this a stream that runs out of memory just stops, and half a text would
            // be kept for good.
            text.exceptions(std::ios::badbit | std::ios::failbit);
            text.imbue(std::locale::classic());  // no separators within the line's number
            text << "Exception '" << readableName(typeid(*this)) << "' (" << record->file << ':'
                 << record->line << "): " << record->message;
            record->whatText = text.str();
        }
    } catch (...) {
        // Who asks for the text of an error is not to be given another one.
    }
    return record->whatText.c_str();
}

}  // namespace Quend::RegistryAccess
