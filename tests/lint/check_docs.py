#!/usr/bin/env python3
"""Runs the examples of the documentation and checks its links.

A comment before a fenced block says what becomes of it:

    <!-- file: NAME -->    the block is written to the file NAME
    <!-- run -->           lines that begin with "$ " are run by bash, the other lines are what they print
    <!-- run: private -->  the same where nothing tells of the installed qzlog but PREFIX, the folder that it is in
    <!-- not run: WHY -->  the block is only read

The blocks of one page share one temporary folder, in the order of the page, which is the home folder too, so that programs leave
their settings there. Every fenced block needs such a comment. A comment of its own, without a block, is

    <!-- copy: FOLDER -->  what is in this folder of ours is copied there

Usage: check_docs.py PREFIX PAGE...     PREFIX is an installed qzlog. Exit status 1 if anything differs.
"""
import difflib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
MARK = re.compile(r"^<!-- (file|run|not run|copy)(?:: (.+))? -->$")
LINK = re.compile(r"\]\(([^)#\s]+)(?:#[^)]*)?\)")


class Block:
    def __init__(self, line, mark, argument):
        self.line, self.mark, self.argument, self.lines = line, mark, argument, []


def blocks_of(text):
    """The fenced blocks of a page, each with the mark on the nearest line above it, and what is copied, as blocks without lines."""
    blocks, mark, argument, open_block = [], None, None, None
    for number, line in enumerate(text.splitlines(), 1):
        if open_block and line.startswith("```"):
            open_block = None
        elif open_block:
            open_block.lines.append(line)
        elif line.startswith("```"):
            open_block = Block(number, mark, argument)
            blocks.append(open_block)
            mark = None
        elif MARK.match(line):
            mark, argument = MARK.match(line).groups()
            if mark == "copy":
                blocks.append(Block(number, mark, argument))
                mark = None
        elif line:
            mark = None
    return blocks


def environment(prefix):
    """What somebody has who installed qzlog into `prefix`."""
    library = next(pathlib.Path(prefix).rglob("libqzlog.so")).parent
    return dict(os.environ, PREFIX=str(prefix), PATH=f"{prefix}/bin:{os.environ['PATH']}", LD_LIBRARY_PATH=str(library),
                PKG_CONFIG_PATH=str(library / "pkgconfig"), CMAKE_PREFIX_PATH=str(prefix), TZ="UTC")


def private(env):
    """The same without what leads to the installed qzlog by itself."""
    kept = {name: value for name, value in env.items()
            if name not in ("LD_LIBRARY_PATH", "PKG_CONFIG_PATH", "CMAKE_PREFIX_PATH")}
    return dict(kept, PATH=env["PATH"].removeprefix(f"{env['PREFIX']}/bin:"))


def run_block(block, folder, env):
    """Runs a block's commands one after the other; returns the block as it should look."""
    actual = []
    for line in block.lines:
        if line.startswith("$ "):
            result = subprocess.run(["bash", "-c", line[2:]], cwd=folder, env=env, stdin=subprocess.DEVNULL,
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
            actual += [line, *result.stdout.splitlines()]
    return actual


def check_block(page, block, folder, env):
    where = f"{page}:{block.line}"
    if block.mark is None:
        return [f"{where}: the block has no mark (file, run, not run)"]
    if block.mark == "run" and block.argument not in (None, "private"):
        return [f"{where}: nothing is run so: {block.argument}"]
    if block.mark == "file":
        (pathlib.Path(folder) / block.argument).write_text("\n".join(block.lines) + "\n", encoding="utf-8")
    elif block.mark == "copy":
        if not (ROOT / block.argument).is_dir():
            return [f"{where}: {block.argument} is no folder"]
        shutil.copytree(ROOT / block.argument, folder, dirs_exist_ok=True)
    elif block.mark == "run":
        actual = run_block(block, folder, private(env) if block.argument == "private" else env)
        if actual != block.lines:
            return [f"{where}: the output differs (- page, + now)",
                    *difflib.unified_diff(block.lines, actual, lineterm="", n=1)]
    return []


def check_links(page, text):
    folder = pathlib.Path(page).parent
    return [f"{page}: {target} does not exist" for target in LINK.findall(text)
            if "://" not in target and not (folder / target).exists()]


def check_page(page, env):
    text = pathlib.Path(page).read_text(encoding="utf-8")
    findings = check_links(page, text)
    with tempfile.TemporaryDirectory(prefix="qzlog-docs.") as folder:
        for block in blocks_of(text):
            findings += check_block(page, block, folder, dict(env, HOME=folder))
    return findings


def main():
    env = environment(pathlib.Path(sys.argv[1]).resolve())
    findings = [finding for page in sys.argv[2:] for finding in check_page(page, env)]
    print("\n".join(findings) if findings else f"docs: no finding in {len(sys.argv) - 2} pages")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
