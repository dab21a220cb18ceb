/// \file
/// Plug-in libraries: modules with a sink provider. LogSink.h describes their entry point.
///
/// Threading: called with LogManager's lock held, which is then held while the system's loader
/// runs. Never log from DllMain or a global's constructor: if another thread loads a plug-in
/// meanwhile, that deadlocks.
#pragma once

#include <memory>
#include <string>

#include "logging/LogSink.h"

namespace Quend::Framework::Logging {

/// Owns one reference to a loaded module.
class Module {
 public:
    /// Loads `path`; a bare file name is searched for as the system does.
    /// Throws: std::system_error with the system's code.
    explicit Module(const std::wstring& path);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    /// Returns the exported function, or null.
    void* find(const char* name) const noexcept;

 private:
    void* handle_;
};

/// A plug-in that is loaded, and its entry point.
struct PluginLibrary {
    Module module;

    explicit PluginLibrary(const std::wstring& path) : module(path) {}

    /// Calls the entry point.
    /// Throws: std::runtime_error if there is none or it returns null.
    std::unique_ptr<LogSinkProvider> createProvider() const;
};

}  // namespace Quend::Framework::Logging
