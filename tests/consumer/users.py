#!/usr/bin/env python3
"""Uses the library as its users have it: users.py TEST ROOT BUILD CXX NM ADDR2LINE TOOLCHAIN [EMULATOR]

package     packs BUILD and uses the zip as a stranger does: unpacks it, moves it, builds its
            examples as they stand, by CMake and by pkg-config, and runs them
subproject  builds the library as a part of another project, and runs the programs of that project
pages       follows the links between the pages, looks for every block of C++ and CMake in a file
            that some test compiles, and runs the blocks for a Linux shell as they stand
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True  # nothing is written beside the sources
from pages import check_blocks, dead_links, run_shell_blocks

GREETING = "Trying to read unexistent property: height\n"  # of the first example
TEST, root, build, CXX, NM, ADDR2LINE, TOOLCHAIN, *EMULATOR = sys.argv[1:]
ROOT, BUILD = pathlib.Path(root), pathlib.Path(build)
WORK = BUILD / "consumer" / TEST


def run(*command, **options):
    subprocess.run(command, check=True, **options)


def output(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def build_project(source, folder, *settings):
    run("cmake", "-S", source, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
        f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", *settings)
    run("cmake", "--build", folder)


def expect_output(text, *program):
    printed = output(*EMULATOR, *program)
    assert text in printed, f"{program} printed:\n{printed}\ninstead of:\n{text}"


def package():
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", WORK / "packed")
    debug_zip, = WORK.glob("packed/*-debug.zip")
    name = debug_zip.name.removesuffix("-debug.zip")
    shutil.unpack_archive(WORK / f"packed/{name}.zip", WORK / "unpacked")
    home = (WORK / "unpacked" / name).rename(WORK / "moved to here")

    # The checksums, which leave out no file but their own.
    run("sha256sum", "--check", f"{name}.zip.sha256", cwd=WORK / "packed")
    run("sha256sum", "--check", "SHA256SUMS", cwd=home)
    listed = {line.split("  ")[1] for line in (home / "SHA256SUMS").read_text().splitlines()}
    files = {file.relative_to(home).as_posix() for file in home.rglob("*") if file.is_file()}
    assert files - listed == {"SHA256SUMS"}, f"SHA256SUMS leaves out: {files - listed}"

    dead = [*dead_links(home)]
    assert not dead, "The package has dead links:\n" + "\n".join(dead)

    # The examples, by CMake. Those of the first module once more from elsewhere, as its page says.
    build_project(home / "examples", WORK / "build")
    expect_output(GREETING, WORK / "build/bin/quick-start.exe")
    expect_output("host: every reference was given back", WORK / "build/bin/host.exe",
                  home / "examples/modules/text.txt", home / "examples/modules/settings.txt")
    first = shutil.copytree(home / "examples/first-module", WORK / "first-module")
    build_project(first, first / "build", f"-DCMAKE_PREFIX_PATH={home}")
    printed = re.search(r"\n```text\n([^`]+)```", (home / "docs/first-module.md").read_text())[1]
    expect_output(printed, first / "build/bin/guests.exe")

    flags = output("pkg-config", "--cflags", "--libs", "quend-framework",
                   env=os.environ | {"PKG_CONFIG_PATH": f"{home}/lib/pkgconfig"})
    run(CXX, home / "examples/quick-start/main.cpp", "-std=c++14",
        "-o", home / "bin/by-pkg-config.exe", *shlex.split(flags))
    expect_output(GREETING, home / "bin/by-pkg-config.exe")

    # Compilers that the package is not for are refused in time. The second one only says what it is.
    (WORK / "find.cmake").write_text("find_package(QuendFramework REQUIRED)\n")
    for reason, setting in [("from source", "MSVC=TRUE"), (
            "compiler's is ucrt", "CMAKE_CXX_COMPILER=cmake;-E;echo;#define _UCRT 1")]:
        refusal = subprocess.run(
            ["cmake", f"-D{setting}", f"-DCMAKE_PREFIX_PATH={home}", "-P", WORK / "find.cmake"],
            capture_output=True, text=True, check=False).stderr
        assert reason in " ".join(refusal.split()), f"not refused because of {reason}: {refusal}"

    # The DLL leads to its debug information, which knows its lines.
    shutil.unpack_archive(debug_zip, WORK / "debug")
    shutil.copytree(WORK / "debug" / name, home, dirs_exist_ok=True)  # over the package
    library, = home.glob("bin/Quend_Framework_*.dll")
    symbol = re.search(r"([0-9a-f]+) T .*10findObjectEPKc", output(NM, f"{library}.debug"))[1]
    line = output(ADDR2LINE, "-e", library, symbol)
    assert re.match(r"/quend/src/core/\w+\.cpp:\d", line), f"findObject is at: {line}"


def subproject():
    build_project(ROOT / "tests/consumer/subproject", WORK, f"-DQUEND={ROOT}")
    inner = [*WORK.rglob("*Static*.a"), *WORK.glob("bin/*")]
    assert not inner, f"The parent got more than the library: {inner}"
    expect_output(GREETING, WORK / "parent.exe")
    run("cmake", "--build", WORK, "--target", "inner")
    expect_output("Messages that wait for a sink: 1", WORK / "inner.exe")


def pages():
    check_blocks(ROOT)
    dead = [*dead_links(ROOT)]
    assert not dead, "Dead links:\n" + "\n".join(dead)
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", WORK / "packed")
    package_zip, = [file for file in WORK.glob("packed/*.zip") if "debug" not in file.stem]
    if "-msvcrt" in package_zip.stem:  # the commands of the pages are for this one
        run_shell_blocks(ROOT, package_zip, WORK / "read", EMULATOR)


shutil.rmtree(WORK, ignore_errors=True)
{"package": package, "subproject": subproject, "pages": pages}[TEST]()
