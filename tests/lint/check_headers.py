#!/usr/bin/env python3
"""Checks that every header compiles on its own, and that no public header pulls in ICU.

An internal header with a source of its own is compiled on its own whenever that is, for it is the first that the source includes;
of these only that is checked.

Usage: check_headers.py [--public COMPILER] [ROOT]
Prints each finding with the compiler's words; exit status 1 if there is one. With --public only the public headers are compiled,
by the compiler named: one for another host.
"""
import argparse
import concurrent.futures
import os
import pathlib
import subprocess
import sys

COMPILERS = ["g++", "clang++"]
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]
PUBLIC_STANDARDS = ["c++11", "c++14", "c++17", "c++20"]
INTERNAL_STANDARDS = ["c++20"]
# Headers that C reads too, those in the folder itself: compilers and standards.
C_FOLDER = "ship"
C_JOBS = [("gcc", "c99"), ("clang", "c99"), ("gcc", "c17")]
INTERNAL_FOLDERS = ["foundation", "util", "entry", "definitions", "config", "message", "counter", "lines", "sinks", "ship", "tools"]
ICU_MARK = "/unicode/"


def comes_first(root, header):
    """Whether the header has a source that begins with it."""
    source = (root / header).with_suffix(".cpp")
    return source.exists() and f'#include "{header}"' == next(
        (line.strip() for line in source.read_text(encoding="utf-8").splitlines() if line.startswith("#include")), None)


def public_jobs(root, compiler):
    """One tuple (header as included, public, compiler, standard) per compilation of a public header."""
    for header in sorted(str(file.relative_to(root / "include")) for file in (root / "include").rglob("*.h")):
        for standard in PUBLIC_STANDARDS:
            yield header, True, compiler, standard


def jobs(root):
    """The same for every header that is checked, with each compiler."""
    internal = sorted(
        str(file.relative_to(root)) for folder in INTERNAL_FOLDERS for file in (root / folder).rglob("*.h"))
    internal = [header for header in internal if not comes_first(root, header)]
    for compiler in COMPILERS:
        yield from public_jobs(root, compiler)
        for header in internal:
            for standard in INTERNAL_STANDARDS:
                yield header, False, compiler, standard
    for header in sorted((root / C_FOLDER).glob("*.h")):
        for compiler, standard in C_JOBS:
            yield str(header.relative_to(root)), False, compiler, standard


def check(root, header, public, compiler, standard):
    """None, or what is wrong."""
    paths = ["-I", str(root / "include")] + ([] if public else ["-I", str(root)])
    language = "c++" if standard.startswith("c++") else "c"
    command = [compiler, f"-std={standard}", *WARNINGS, *paths, "-fsyntax-only", "-H", "-x", language, "-"]
    result = subprocess.run(command, input=f'#include "{header}"\n', capture_output=True, text=True, check=False)
    if result.returncode != 0:
        words = [line for line in result.stderr.splitlines() if not line.startswith(".")]
        return f"{header}: does not compile on its own with {compiler} -std={standard}\n" + "\n".join(words)
    if public and ICU_MARK in result.stderr:
        return f"{header}: pulls in an ICU header"
    return None


def check_tree(root, public_compiler=None):
    """How many compilations there were, and what was found; with a compiler named, of the public headers and with that one."""
    root = pathlib.Path(root)
    chosen = public_jobs(root, public_compiler) if public_compiler else jobs(root)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(lambda job: check(root, *job), chosen))
    return len(results), [finding for finding in results if finding]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--public", metavar="COMPILER")
    parser.add_argument("root", nargs="?", default=".")
    arguments = parser.parse_args()
    count, findings = check_tree(arguments.root, arguments.public)
    print("\n".join(findings) if findings else f"headers: no finding in {count} compilations")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
