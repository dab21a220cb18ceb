#pragma once

/// \def QUEND_FRAMEWORK_API
/// Marks what crosses the boundary of the DLL. Of two macros, at most one is defined:
/// - QUEND_FRAMEWORK_BUILDING while the DLL itself is compiled;
/// - QUEND_FRAMEWORK_STATIC where the sources are linked straight into a program;
/// - neither in a client, which imports from the DLL.

#if defined(QUEND_FRAMEWORK_STATIC)
#define QUEND_FRAMEWORK_API
#elif defined(QUEND_FRAMEWORK_BUILDING)
#if defined(_MSC_VER)
#define QUEND_FRAMEWORK_API __declspec(dllexport)
#else
// GCC exports the type information of thrown and inner classes along with a dllexport
// class; src/Exports.def names what leaves the library, and nothing else does.
#define QUEND_FRAMEWORK_API
#endif
#else
/// Marks what crosses the boundary of the DLL.
#define QUEND_FRAMEWORK_API __declspec(dllimport)
#endif
