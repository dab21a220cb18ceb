// Shared by the tests of logging and the two modules that they load.
#pragma once

#include <cstdint>

using Report = void (*)(const char* event);

// The plug-in exports preparePlugin. It reports what happens to it to `report`, refuses to be
// loaded if told so, and its sinks never return from writing "block".
using PreparePlugin = void(Report report, bool isRefusing);

// The module exports logInModule: loads the plug-in unless null, and logs to a channel for which
// only the plug-in has a sink.
using LogInModule = void(const wchar_t* plugin, std::uint32_t level, const char* text);
