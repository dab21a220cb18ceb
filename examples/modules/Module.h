// What the host program and its modules agree on: each module is a DLL with these two exports.
#pragma once

#include <iostream>

#define MODULE_EXPORT extern "C" __declspec(dllexport)

// Starts the module with the text file and the settings file that the host was given. Prints what
// it does. On failure it prints why, holds nothing and returns false.
using StartModule = bool(const char* textFile, const char* settingsFile);

// Gives back everything the module holds. Called once, after startModule has returned true.
using StopModule = void();

// For a handler in startModule: an exception must not leave the module.
inline bool failed(const char* why) {
    std::cerr << "[module] " << why << '\n';
    return false;
}
