# clang for the same target: a second opinion on the sources, with the headers, the runtime and the
# linker of the MinGW toolchain. Its modules mix with those of GCC. The linker stays GNU's, though it
# notes sections of different size: lld 22 drops unwind tables of libstdc++.a, and an exception that
# passes such a function ends in a crash.
include(${CMAKE_CURRENT_LIST_DIR}/Toolchain-mingw.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/Toolchain-clang.cmake)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# What GCC does unasked: thread-local variables as libstdc++ expects them, and posix threads.
set(CMAKE_CXX_FLAGS_INIT "-femulated-tls -pthread")
# llvm-objcopy cannot strip the runtime DLLs; the others read what GNU tools wrote.
foreach(tool objcopy addr2line nm)
  string(TOUPPER ${tool} variable)
  set(CMAKE_${variable} /usr/bin/x86_64-w64-mingw32-${tool})
endforeach()
