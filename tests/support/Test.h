// GoogleTest, and what most tests use of Windows and of the standard library.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>
