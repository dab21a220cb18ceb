# What the toolchains of GCC for Windows have in common. Programs run under Wine.
find_program(mingw_compiler ${mingw_target}-g++${mingw_threads} NO_CACHE)
if(NOT mingw_compiler)
  message(FATAL_ERROR "This build needs the compiler ${mingw_target}-g++${mingw_threads}, which is "
    "not on this machine. It is in Debian's package ${mingw_package}.")
endif()

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER ${mingw_target}-gcc${mingw_threads})  # GoogleTest asks for one
set(CMAKE_CXX_COMPILER ${mingw_target}-g++${mingw_threads})
set(CMAKE_RC_COMPILER ${mingw_target}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${mingw_target})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
