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

// Such as "class Quend::RegistryAccess::Registry::NotFound", with every compiler.
std::string readableName(const std::type_info& type) {
#ifdef _MSC_VER
    return type.name();
#else
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr), &std::free);
    if (demangled == nullptr) {
        throw std::bad_alloc();  // the only reason, as the name is well-formed
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
            // Otherwise a stream that runs out of memory stops without a word, and half a text
            // would be kept.
            text.exceptions(std::ios::badbit | std::ios::failbit);
            text.imbue(std::locale::classic());  // no separators in the line number
            text << "Exception '" << readableName(typeid(*this)) << "' (" << record->file << ':'
                 << record->line << "): " << record->message;
            record->whatText = text.str();
        }
    } catch (...) {
        // what() must not throw.
    }
    return record->whatText.c_str();
}

}  // namespace Quend::RegistryAccess
