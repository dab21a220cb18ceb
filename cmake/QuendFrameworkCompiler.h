// Preprocessed by QuendFrameworkCompiler.cmake, for the macros that it defines.
#if __has_include(<mutex>)
#include <mutex>
#endif
