/// \file
// A plug-in library: a module with sink providers in it, loaded for as long as its record lives.
/// What it has to export stands in LogSink.h.
///
/// Threading: called with LogManager's lock held. That lock is held while the system's loader
/// runs, and the loader's while a module starts or ends: a component that logs from there while
/// another thread loads a plug-in makes the two wait for each other.
#pragma once

#include <memory>
#include <string>

#include "logging/LogSink.h"

namespace Quend::Framework::Logging {

/// Owns one reference to a loaded module.
class Module {
 public:
    /// Loads `path`, or counts one more reference if it is loaded; a bare file name is searched
    /// for as the system does it. Throws std::system_error with the system's code.
    explicit Module(const std::wstring& path);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    /// The exported function or null.
    void* find(const char* name) const noexcept;

 private:
    void* handle_;
};

struct PluginLibrary {
    Module module;

    explicit PluginLibrary(const std::wstring& path) : module(path) {}

    /// Calls the entry point. Throws std::runtime_error if there is none, or it returns null or
    /// throws; its own exception would not outlive the module, so only its text is passed on.
    std::unique_ptr<LogSinkProvider> createProvider() const;
};

}  // namespace Quend::Framework::Logging
