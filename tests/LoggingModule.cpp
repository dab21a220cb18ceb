#include "LoggingPlugin.h"
#include "logging/LogManager.h"

extern "C" __declspec(dllexport) void logInModule(const wchar_t* plugin, const char* text) {
    Quend::Framework::Logging::loadPluginLibrary(plugin);
    Quend::Framework::Logging::log(Quend::Framework::Logging::getChannel("c"), 1, text);
}
