// The names of Windows that Registry.h needs.
#pragma once

#define WINAPI
using HKEY = struct HKEY__*;
using LSTATUS = long;
