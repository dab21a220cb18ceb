"""Tries the pages: their links, their blocks of code, and the shell commands that can run here."""

import os
import re
import shlex
import shutil
import subprocess

PACKAGE = "/path/to/the/package"  # what a reader replaces


def blocks(page, *languages):
    return re.findall(rf"\n```(?:{'|'.join(languages)})\n(.*?)```", page.read_text(), re.S)


def anchors(page):
    """What the headings of a page are called in links, by GitHub's rules."""
    headings = re.findall(r"^#+ (.*)$", page.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", heading).lower().replace(" ", "-") for heading in headings}


def dead_links(root):
    """The links between the pages below `root` that lead nowhere."""
    for page in [*root.glob("*.md"), *root.glob("docs/**/*.md")]:
        for link in re.findall(r"\]\(([^):]+)\)", page.read_text()):
            path, _, anchor = link.partition("#")
            target = page.parent / path if path else page
            if not target.exists() or (anchor and anchor not in anchors(target)):
                yield f"{page.relative_to(root)}: {link}"


def check_blocks(root):
    """Every block of C++ and CMake stands in a file that some test compiles."""
    files = [*(root / "examples").rglob("*.*"), root / "tests/consumer/subproject/CMakeLists.txt"]
    sources = "".join(file.read_text() for file in files)
    found = [block for page in [*root.glob("*.md"), *root.glob("docs/**/*.md")]
             for block in blocks(page, "cpp", "cmake")]
    missing = [block for block in found if block not in sources]
    assert len(found) >= 10 and not missing, "No file has:\n" + "\n".join(missing)


def run_shell_blocks(root, package_zip, folder, wine):
    """Runs the blocks for a Linux shell as they stand, and compares what follows as text. Blocks that
    begin with a script are for the source tree; they are what CI runs."""
    tools = folder / "tools"
    tools.mkdir(parents=True)
    (tools / "wine").write_text(f'#!/bin/sh\nexec {shlex.join(wine)} "$@"\n')
    (tools / "wine").chmod(0o755)
    environment = os.environ | {"PATH": f"{tools}:{os.environ['PATH']}"}
    for name in ["CXX", "CMAKE_TOOLCHAIN_FILE", "CMAKE_GENERATOR"]:
        environment.pop(name, None)  # a reader has set none of them

    shutil.copy(package_zip, folder)
    shutil.unpack_archive(package_zip, folder / "elsewhere")
    package = folder / "elsewhere" / package_zip.stem
    count = 0
    for name in ["README.md", "docs/requirements.md", "docs/first-module.md"]:
        page = root / name
        place = folder
        if page.stem == "first-module":
            place = shutil.copytree(package / "examples/first-module", folder / "first-module")
        for block in blocks(page, "sh"):
            if block.startswith("scripts/"):
                continue
            commands = "set -e\n" + block.replace(PACKAGE, str(package))
            done = subprocess.run(["sh", "-c", commands], cwd=place, env=environment,
                                  stdout=subprocess.PIPE, text=True, check=False)
            assert done.returncode == 0, f"{name}: {block}ended with {done.returncode}\n{done.stdout}"
            for expected in blocks(page, "text"):
                assert expected in done.stdout, f"{name} promises:\n{expected}\nbut:\n{done.stdout}"
            count += 1
    assert count >= 2, f"only {count} blocks were run"
