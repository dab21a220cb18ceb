// What the host program and its modules agree on: each module is a DLL with these two exports.
#pragma once

#define MODULE_EXPORT extern "C" __declspec(dllexport)

// Starts the module with what the host was given: the text file and the settings file. Prints
// what it does; on false it has said why not and holds nothing.
using StartModule = bool(const char* textFile, const char* settingsFile);

// Gives back everything the module holds. Called once, after startModule has returned true.
using StopModule = void();
