# GCC for 64-bit Windows with the C runtime of today, UCRT. It has posix threads alone.
set(mingw_target x86_64-w64-mingw32ucrt)
set(mingw_threads "")
set(mingw_package "g++-mingw-w64-ucrt64, from Debian 13 on")
include(${CMAKE_CURRENT_LIST_DIR}/Mingw.cmake)
