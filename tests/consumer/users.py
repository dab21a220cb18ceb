#!/usr/bin/env python3
"""Uses the library as its users have it: users.py TEST ROOT BUILD CXX NM ADDR2LINE TOOLCHAIN [EMULATOR]

package     packs BUILD and uses the zip as a stranger does: unpacks it, moves it, builds its
            examples as they stand, by CMake and by pkg-config, and runs them
refusals    asks for the package with what it is not for: compilers, versions, systems
subproject  builds the library as a part of another project, and runs the programs of that project
pages       follows the links between the pages, looks for every block of C++ and CMake in a file
            that some test compiles, and runs the blocks for a Linux shell as they stand
"""

import filecmp
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True  # nothing is written beside the sources
from pages import check_blocks, dead_links, run_shell_blocks
from refusals import refuse_compilers, refuse_parents, refuse_versions

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
    runtime = home / "bin/libstdc++-6.dll"

    # The checksums, which leave out no file but their own.
    run("sha256sum", "--check", f"{name}.zip.sha256", cwd=WORK / "packed")
    run("sha256sum", "--check", "SHA256SUMS", cwd=home)
    listed = {line.split("  ")[1] for line in (home / "SHA256SUMS").read_text().splitlines()}
    files = {file.relative_to(home).as_posix() for file in home.rglob("*") if file.is_file()}
    assert files - listed == {"SHA256SUMS"}, f"SHA256SUMS leaves out: {files - listed}"

    # The list of the DLLs, which is made in two steps: nothing in it is left open.
    document = next(home.glob("*.spdx")).read_text()
    components = re.findall(r"^PackageName: (.+)$", document, re.M)
    suppliers = re.findall(r"^PackageSupplier: Organization: (.+)$", document, re.M)
    versions = re.findall(r"^PackageVersion: (.+)$", document, re.M)
    assert sorted(components) == sorted(dll.name for dll in home.glob("bin/*.dll")), document
    assert len(components) == len(suppliers) == len(versions) and "@" not in document, document
    assert re.search(r"^DocumentNamespace: urn:uuid:[0-9a-f-]{36}$", document, re.M), document

    dead = [*dead_links(home)]
    assert not dead, "The package has dead links:\n" + "\n".join(dead)

    # The examples, by CMake. The compiler's own runtime is not older than the package's.
    build_project(home / "examples", WORK / "build")
    expect_output(GREETING, WORK / "build/bin/quick-start.exe")
    expect_output("host: every reference was given back", WORK / "build/bin/host.exe",
                  home / "examples/modules/text.txt", home / "examples/modules/settings.txt")
    copied = WORK / "build/bin/libstdc++-6.dll"
    assert not filecmp.cmp(copied, runtime, shallow=False), "The compiler's runtime was not taken."

    # Those of the first module once more from elsewhere, as its page says, and as if the package came
    # from a compiler that is newer than this one.
    config, = home.rglob("QuendFrameworkConfig.cmake")
    config.write_text(re.sub(r"(VERSION_LESS) [\d.]+", r"\1 999", config.read_text()))
    first = shutil.copytree(home / "examples/first-module", WORK / "first-module")
    build_project(first, first / "build", f"-DCMAKE_PREFIX_PATH={home}")
    printed = re.search(r"\n```text\n([^`]+)```", (home / "docs/first-module.md").read_text())[1]
    expect_output(printed, first / "build/bin/guests.exe")
    copied = first / "build/bin/libstdc++-6.dll"
    assert filecmp.cmp(copied, runtime, shallow=False), "The package's runtime was not taken."

    flags = output("pkg-config", "--cflags", "--libs", "quend-framework",
                   env=os.environ | {"PKG_CONFIG_PATH": f"{home}/lib/pkgconfig"})
    run(CXX, home / "examples/quick-start/main.cpp", "-std=c++14",
        "-o", home / "bin/by-pkg-config.exe", *shlex.split(flags))
    expect_output(GREETING, home / "bin/by-pkg-config.exe")

    # The DLL leads to its debug information, which knows its lines.
    shutil.unpack_archive(debug_zip, WORK / "debug")
    shutil.copytree(WORK / "debug" / name, home, dirs_exist_ok=True)  # over the package
    library, = home.glob("bin/Quend_Framework_*.dll")
    symbol = re.search(r"([0-9a-f]+) T .*10findObjectEPKc", output(NM, f"{library}.debug"))[1]
    line = output(ADDR2LINE, "-e", library, symbol)
    assert re.match(r"/quend/src/core/\w+\.cpp:\d", line), f"findObject is at: {line}"


def refusals():
    run("cmake", "--install", BUILD, "--component", "package", "--prefix", WORK / "home")
    refuse_compilers(ROOT, WORK / "home", WORK)
    refuse_versions(ROOT, WORK / "home", WORK)
    refuse_parents(ROOT, WORK, CXX)


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
WORK.mkdir(parents=True)
{"package": package, "refusals": refusals, "subproject": subproject, "pages": pages}[TEST]()
