#include "logging/PluginLibrary.h"

#include <windows.h>

#include <stdexcept>
#include <system_error>

namespace Quend::Framework::Logging {
namespace {

// For a message: every unit beyond ASCII becomes a question mark, in any locale.
std::string readable(const std::wstring& path) {
    std::string text;
    for (const wchar_t unit : path) {
        text += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return text;
}

// An author may have left the noexcept out. So the call is made as if it were not there, and an
// exception ends the program here.
LogSinkProvider* callEntryPoint(LogSinkProvider* (*create)()) noexcept { return create(); }

}  // namespace

Module::Module(const std::wstring& path) : handle_(LoadLibraryW(path.c_str())) {
    if (handle_ == nullptr) {
        const auto code = static_cast<int>(GetLastError());
        throw std::system_error(code, std::system_category(),
                                "Cannot load the plug-in library " + readable(path));
    }
}

Module::~Module() { FreeLibrary(static_cast<HMODULE>(handle_)); }

void* Module::find(const char* name) const noexcept {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

std::unique_ptr<LogSinkProvider> PluginLibrary::createProvider() const {
    auto* const create = reinterpret_cast<CreateLogSinkProvider*>(module.find(kPluginEntryPoint));
    if (create == nullptr) {
        throw std::runtime_error("The plug-in library has no entry point createLogSinkProvider");
    }
    std::unique_ptr<LogSinkProvider> provider(callEntryPoint(create));
    if (provider == nullptr) {
        throw std::runtime_error("The entry point of the plug-in library returned no provider");
    }
    return provider;
}

}  // namespace Quend::Framework::Logging
