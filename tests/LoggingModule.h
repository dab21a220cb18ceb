// What the tests of logging find in LoggingModule, which is also the plug-in that it loads itself.
#pragma once

#include <cstdint>
#include <string_view>

// What the entry point of plug-ins does.
enum class EntryPoint { kReturnsProvider, kReturnsNull, kThrows };

// Exported as prepareModule: events are reported to `report`, and the entry point does what is said
// here. A sink never returns from writing "block".
using Report = void (*)(std::string_view piece);
using PrepareModule = void(Report report, EntryPoint entryPoint);

// Exported as logInModule: loads the plug-in unless null, and logs to a channel "own" for which
// only the plug-in has a sink.
using LogInModule = void(const wchar_t* plugin, std::uint32_t level, const char* text);
