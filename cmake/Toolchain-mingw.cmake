# GCC for 64-bit Windows with the older of its two C runtimes, msvcrt.dll. Debian has this compiler
# with two kinds of threads: the standard library's mutexes, threads and futures need posix threads.
set(mingw_target x86_64-w64-mingw32)
set(mingw_threads -posix)
set(mingw_package g++-mingw-w64-x86-64-posix)
include(${CMAKE_CURRENT_LIST_DIR}/Mingw.cmake)
