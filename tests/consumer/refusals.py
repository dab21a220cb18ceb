"""Asks for the library with what it is not for: each time one sentence says why, and a page has it."""

import re
import shutil
import subprocess
from typing import NamedTuple


class Compiler(NamedTuple):
    defines: str  # all that a stand-in for it says
    real: str     # its name on Debian; tried as well on a machine that has it
    refusal: str


POSIX = "_GLIBCXX_GCC_GTHR_POSIX_H"
COMPILERS = [
    Compiler(f"__linux__ __x86_64__ __GLIBCXX__ {POSIX}", "g++",
             "Quend Framework is for Windows, and this compiler makes programs for another system."),
    Compiler(f"__MINGW32__ __i386__ __GLIBCXX__ {POSIX}", "i686-w64-mingw32-g++-posix",
             "Quend Framework is for x86-64, and this compiler makes programs for 32 bits or for ARM."),
    Compiler("__MINGW32__ __x86_64__ __GLIBCXX__ GCC_GTHR_WIN32_H", "x86_64-w64-mingw32-g++-win32",
             "Quend Framework needs posix threads, and this compiler has win32 or mcf threads."),
    Compiler(f"__MINGW32__ __x86_64__ __GLIBCXX__ {POSIX} __clang_major__=18", "",
             "Quend Framework was tried with clang 19 and later, and this clang is older."),
    Compiler("__MINGW32__ __x86_64__ _LIBCPP_VERSION __clang_major__=19", "",
             "Quend Framework needs GCC's libstdc++, and this compiler uses another C++ library."),
]
OF_MSVCRT = Compiler(
    f"__MINGW32__ __x86_64__ __GLIBCXX__ {POSIX}", "x86_64-w64-mingw32-g++-posix",
    "This package is for ucrt: take the zip for this compiler's C runtime, msvcrt.")
OF_UCRT = Compiler(
    f"__MINGW32__ __x86_64__ __GLIBCXX__ {POSIX} _UCRT", "x86_64-w64-mingw32ucrt-g++",
    "This package is for msvcrt: take the zip for this compiler's C runtime, ucrt.")


def expect_refusal(root, sentence, *command):
    """The command fails with one error, which has the sentence; a page tells what it means."""
    refused = subprocess.run(command, capture_output=True, text=True, check=False)
    print(refused.stderr)
    printed = " ".join(refused.stderr.split())
    assert refused.returncode != 0 and sentence in printed, f"{command} did not end with: {sentence}"
    assert printed.count("CMake Error") == 1 and ";" not in printed, "That is more than a sentence."
    assert sentence in (root / "docs/troubleshooting.md").read_text(), f"No page has: {sentence}"


def refuse_script(root, sentence, package, folder, *settings):
    """find_package in a script, with what the settings say of the compiler."""
    script = folder / "find.cmake"
    script.write_text("find_package(QuendFramework ${VERSION} REQUIRED)\n")
    expect_refusal(root, sentence, "cmake", f"-DCMAKE_PREFIX_PATH={package}", *settings, "-P", script)


def refuse_compilers(root, package, folder):
    config, = package.rglob("QuendFrameworkConfig.cmake")
    other = OF_MSVCRT if "This package is for ucrt" in config.read_text() else OF_UCRT
    for compiler in [*COMPILERS, other]:
        says = "".join(f"#define {name.replace('=', ' ')} " for name in compiler.defines.split())
        refuse_script(root, compiler.refusal, package, folder,
                      f"-DCMAKE_CXX_COMPILER=cmake;-E;echo;{says}")
        if shutil.which(compiler.real):
            system = ["-DCMAKE_SYSTEM_NAME=Windows"] if "mingw" in compiler.real else []
            build = folder / compiler.real
            expect_refusal(root, compiler.refusal, "cmake", "-S", package / "examples", "-B", build,
                           f"-DCMAKE_CXX_COMPILER={compiler.real}", "-G", "Ninja", *system)
            assert not (build / "build.ninja").exists(), "Half a build was made."
    refuse_script(root, "This package is for MinGW-w64: with MSVC, build the library from source.",
                  package, folder, "-DMSVC=TRUE")
    refuse_script(root, "Quend Framework needs CXX among the languages of the project.",
                  package, folder)


def refuse_versions(root, package, folder):
    refuse_script(root, "1.1.12, which must be asked for by its full number",
                  package, folder, "-DVERSION=1.1")


def refuse_parents(root, folder, cxx):
    """A project for another system, of which the library is a part. It finds nothing of ours in its
    cache."""
    parent = folder / "parent"
    expect_refusal(
        root, "Quend Framework is for Windows, and this project is built for another system.",
        "cmake", "-S", root / "tests/consumer/subproject", "-B", parent, "-G", "Ninja",
        f"-DQUEND={root}", f"-DCMAKE_CXX_COMPILER={cxx}", "-DCMAKE_SYSTEM_NAME=Generic",
        "-DCMAKE_CXX_COMPILER_WORKS=TRUE")
    names = re.findall(r"^(\w+):", (parent / "CMakeCache.txt").read_text(), re.M)
    leaked = [name for name in names if re.match("QUEND_|QuendFramework|GTEST|gtest|BUILD_", name)]
    assert not leaked, f"The parent's cache has: {leaked}"
