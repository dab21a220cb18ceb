# GoogleTest: Debian's sources, or an installed package, or else fetched. It is compiled as C++20,
# as the tests are, and its own warnings are no errors.
block()
  include(FetchContent)
  if(EXISTS /usr/src/googletest)
    set(FETCHCONTENT_SOURCE_DIR_GOOGLETEST /usr/src/googletest)
  endif()
  FetchContent_Declare(googletest SYSTEM
    URL https://github.com/google/googletest/releases/download/v1.17.0/googletest-1.17.0.tar.gz
    URL_HASH SHA256=65fab701d9829d38cb77c14acdc431d2108bfdbf8979e40eb8ae567edf10b27c
    FIND_PACKAGE_ARGS NAMES GTest)
  set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)  # it takes the options below as they are
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK OFF)
  set(gtest_force_shared_crt ON)  # MSVC: the C runtime as a DLL, as everywhere
  set(CMAKE_CXX_STANDARD 20)
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
  FetchContent_MakeAvailable(googletest)
endblock()
