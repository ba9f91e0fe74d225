#!/usr/bin/env python3
"""Writes the seeds of the fuzzers that take compiled files (definitions, resource bundles), whole and damaged, into fuzz/seeds.

Usage: write_seeds.py QZLOG      Resource bundles are made with ICU's genrb, for machines of this byte order.
"""
import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

SEEDS = pathlib.Path(__file__).parent / "seeds"

# Where numbers stand in the header.
GLOBAL_COUNT, GLOBAL_OFFSET, ENTRY_COUNT, MAP_OFFSET = 40, 44, 48, 56
HEADER_SIZE = 128

OLD = """
version: "1.0"
globals: [{name: G, type: Char32}, {name: H, type: UInt2}, {name: I, type: UInt4}]
entries:
  - {id: 1, name: A, message: "{N} and {F:d}", mask: 1, attributes: [
      {name: N, type: Char32}, {name: F, type: UInt2}, {name: O, type: Char64}, {name: M, type: Date}, {name: Q, type: UInt1}],
      selector: {attribute: F, messages: [{index: 1, value: 1, id: s, text: "s"}, {index: 2, value: 2, id: t, text: "t"},
      {index: 3, value: 3, id: u, text: "u {N}"}]}}
  - {id: 2, name: B, message: "gone"}
  - {id: 3, name: C, message: "a b", word: 1}
"""
NEW = """
version: "2.0"
globals: [{name: H, type: UInt2}, {name: G, type: Char64}, {name: J, type: UInt4}, {name: O, type: Char64}]
entries:
  - {id: 1, name: A, message: "{F:u} {M}", mask: 3, attributes: [
      {name: F, type: UInt4}, {name: N, type: Char32, redirect: r}, {name: M, type: Time}, {name: I, type: UInt4},
      {name: Q, type: SInt1}, {name: R, type: Float}],
      selector: {attribute: I, messages: [{index: 2, value: 1, id: s, text: "s"}, {index: 4, value: 4, id: u, text: "v {N}"}]}}
  - {id: 3, name: C, message: "a  b", word: 2}
  - {id: 4, name: D, message: "new", selector: {messages: [{index: 1, value: 1, id: x, text: "y"}]}}
"""
AUXILIARY = """
version: "2.5"
entries:
  - {id: 3, name: FULL, attributes: [{name: Pool, type: Char64}],
      selector: {messages: [{index: 7, value: 70, id: disk.pool, text: "The pool {Pool} is used up"}]}}
  - {id: 9, name: EXTRA, message: "more {N}", attributes: [{name: N, type: Char32}]}
"""
# ICU parses nested braces by calling itself; the library refuses what is too deep for a stack.
DEEP_PATTERN = """
version: "1.0"
entries: [{id: 1, name: A, raw: "%s%N%DEEP%_%TIMESTAMP%", attributes: [{name: N, type: Char32}]}]
""".replace("DEEP", "{0,select,other{" * 110)
# Of each kind of value one, the last of which refer to others.
BUNDLE = """made {
  STRING_TABLE {
    "disk.full" { "Platte voll: %d%Count%" } empty { "" } long { "A text that has its length before it, for it is longer" }
    nested { inner { "text" } list { "a", "b" } table:table { } } number:int { 7 } numbers:intvector { 1, 2 } raw:bin { 010203 }
    other:alias { "/LOCALE/STRING_TABLE/empty" }
  }
  "%%Parent" { "root" }
}
"""


class Compiler:
    def __init__(self, program):
        self.program = program

    def __call__(self, source, *options):
        command = [self.program, "compile", "-", "-o", "-", "--path", "icu", *options]
        return subprocess.run(command, input=source.encode(), stdout=subprocess.PIPE, check=True).stdout


def int4(data, offset):
    return struct.unpack_from(">I", data, offset)[0]


def with_int4(data, offset, value):
    return data[:offset] + struct.pack(">I", value) + data[offset + 4:]


def names_section(file):
    """The names behind the records, which the last 24 bytes tell of."""
    offset, size = struct.unpack_from(">II", file, len(file) - 16)
    return file[offset:offset + size]


def with_trailer_of_version_2(file):
    trailer = with_int4(file[-24:], 4, 2)[:20]
    return file[:-24] + trailer + struct.pack(">I", zlib.crc32(trailer))


def damaged_forms(file, entry_count):
    """A file with a map of several entries, damaged where it decides what is read."""
    entry_map = int4(file, MAP_OFFSET)
    first_record = int4(file, entry_map + 4)
    return {
        "cut.ldf": file[:len(file) * 2 // 3],
        "header_only.ldf": file[:HEADER_SIZE],
        "many_globals.ldf": with_int4(file, GLOBAL_COUNT, 0xFFFFFFFF),
        "many_entries.ldf": with_int4(file, ENTRY_COUNT, 0x20000000),
        "map_beyond_end.ldf": with_int4(file, MAP_OFFSET, len(file) - 4),
        "globals_are_map.ldf": with_int4(file, GLOBAL_OFFSET, entry_map),
        "long_text.ldf": with_int4(file, first_record + 12, 0x7FFFFFFF),
        "text_without_zero.ldf": with_int4(file, first_record + 12, 1),
        "same_record_twice.ldf": with_int4(file, entry_map + 8 * (entry_count - 1) + 4, first_record),
        "same_id_twice.ldf": with_int4(file, entry_map + 8, int4(file, entry_map)),
    }


def run_genrb(folder, *arguments):
    subprocess.run(["genrb", "--quiet", *arguments, "--destdir", ".", "made.txt"], cwd=folder, stdout=subprocess.DEVNULL, check=True)


def package_of(name, content):
    """A package file with one file in it."""
    header = content[:12] + b"CmnD\1\0\0\0" + content[20:32]
    contents_size = 4 + 8
    names = name.encode().ljust(20, b"\0")
    return header + struct.pack("=III", 1, contents_size, contents_size + len(names)) + names + content


def bundle_seeds():
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder)
        (path / "made.txt").write_text(BUNDLE)
        seeds = {}
        for version in "123":
            run_genrb(folder, "--formatVersion", version)
            seeds[f"version{version}.res"] = (path / "made.res").read_bytes()
        run_genrb(folder, "--writePoolBundle")
        pool = (path / "pool.res").read_bytes()
        run_genrb(folder, "--usePoolBundle", ".")
        pooled = (path / "made.res").read_bytes()
    seeds["pooled.res"] = half_and_half(pooled, pool)
    seeds["without_pool.res"] = pooled
    seeds["cut.res"] = seeds["version2.res"][:200]
    seeds["package.dat"] = package_of("catalog/root.res", seeds["version1.res"])
    return seeds


def half_and_half(first, second):
    size = max(len(first), len(second))
    return first.ljust(size, b"\0") + second.ljust(size, b"\0")


def write(fuzzer, seeds):
    folder = SEEDS / fuzzer
    folder.mkdir(parents=True, exist_ok=True)
    for name, content in seeds.items():
        (folder / name).write_bytes(content)


def main():
    compile_source = Compiler(sys.argv[1])
    standard = SEEDS / "definition_source" / "everything.yaml"
    everything = compile_source(standard.read_text())
    auxiliary = compile_source(AUXILIARY, "--aux-of", str(standard))
    minimal = compile_source('version: "1.0"\nentries: [{id: 1, name: A, message: "a"}]')
    old = compile_source(OLD)
    new = compile_source(NEW)
    stripped = compile_source(OLD, "--strip")

    files = {"minimal.ldf": minimal, "everything.ldf": everything, "several.ldf": old, "shorter_than_magic.ldf": b".LD",
             "stripped.ldf": stripped, "names_damaged.ldf": old[:-30] + b"?" + old[-29:],
             "names_cut.ldf": old[:-30], "names_of_version_2.ldf": with_trailer_of_version_2(old),
             **damaged_forms(stripped, 3)}
    write("compiled_file", files)
    write("inspect", files)
    write("definition_file", {
        "everything.ldf": everything,
        "pair.ldf": half_and_half(everything, auxiliary),
        "colliding_pair.ldf": half_and_half(old, new),
        "auxiliary_alone.ldf": half_and_half(b"", auxiliary),
        "deep_pattern.ldf": compile_source(DEEP_PATTERN),
        **damaged_forms(stripped, 3),
    })
    write("names_section", {
        "everything.bin": names_section(everything),
        "auxiliary.bin": names_section(auxiliary),
        "no_parts.bin": b"QNAM",
        "unknown_part.bin": b"QNAM" + struct.pack(">II", 3, 4) + b"more" + names_section(minimal)[4:],
        "huge_count.bin": with_int4(names_section(old), 12, 0xFFFFFFFF),
        "events_twice.bin": names_section(minimal) + names_section(minimal)[4:],
        "cut.bin": names_section(everything)[:-3],
    })
    write("resource_bundle", bundle_seeds())
    write("diff", {
        "itself.ldf": old,
        "same_twice.ldf": everything + everything,
        "changed.ldf": old + new,
        "changed_back.ldf": new + old,
        "nothing_in_common.ldf": minimal + everything,
        "auxiliary.ldf": everything + auxiliary,
        "globals_gone.ldf": old + with_int4(old, GLOBAL_COUNT, 0),
        "entries_gone.ldf": with_int4(old, ENTRY_COUNT, 0) + old,
        "same_id_twice.ldf": old + with_int4(old, int4(old, MAP_OFFSET) + 8, 1),
        "damaged.ldf": old + new[:-5],
    })


if __name__ == "__main__":
    main()
