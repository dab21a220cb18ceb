// Between the tests of logging and the two modules that they load.
#pragma once

using Report = void (*)(const char* event);

// What the plug-in's entry point does.
enum class EntryPoint { kProvides, kReturnsNull, kThrows, kThrowsAnInteger };

// The plug-in exports preparePlugin: it reports what happens to it to `report`, and its sinks
// never return from the text "block".
using PreparePlugin = void(Report report, EntryPoint behaviour);

// The module exports logInModule, which loads the plug-in and logs `text` to the channel "c".
using LogInModule = void(const wchar_t* plugin, const char* text);
