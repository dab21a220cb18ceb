# The version of clang that scripts/install-tools installs, so that it is the same everywhere.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/llvm-version llvm)
set(CMAKE_C_COMPILER clang-${llvm})
set(CMAKE_CXX_COMPILER clang++-${llvm})
