#!/usr/bin/env python3
"""Measures how long qzlog compile takes and how much memory it needs, for sources of 1,000 to 100,000 entries.

Usage: compile_time.py QZLOG [ENTRIES...]      Prints the best of three runs each, as a table.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

SIZES = [1000, 10000, 100000]
RUNS = 3

HEAD = """version: "1.0"
accept:
  - {rule: negative-unsigned, reason: the sizes stay below}
  - {rule: unused-attribute, reason: programs read them}
globals:
  - {name: COMPUTER_NAME, type: MBChar64}
entries:
"""
ENTRY = """  - id: {id}
    name: EVENT_{id}
    summary: What happened to volume {id}.
    mask: 0x00000005
    message: "Volume {{Name}} on {{COMPUTER_NAME}} is full: {{Free}} of {{Total}} blocks are free, {{Share:P}} (no. {id})"
    message_id: event.{id}
    attributes:
      - {{name: Name,   type: Char32, redirect: volume_name}}
      - {{name: Free,   type: UInt4}}
      - {{name: Total,  type: UInt4}}
      - {{name: Share,  type: Float}}
      - {{name: Reason, type: UInt2}}
"""
SELECTOR = """    selector:
      attribute: Reason
      messages:
        - {{index: 1, value: 10, id: event.{id}.quota, text: "The quota of {{Name}} is used up"}}
        - {{index: 2, value: 20, id: event.{id}.snapshots, text: "Snapshots leave only {{Free}} blocks on {{Name}}"}}
"""


def write_source(path, entries):
    """Every fourth entry has selector messages, as in the example product."""
    with open(path, "w", encoding="utf-8") as file:
        file.write(HEAD)
        for number in range(1, entries + 1):
            file.write(ENTRY.format(id=number))
            if number % 4 == 0:
                file.write(SELECTOR.format(id=number))


def run(command):
    """Seconds and peak memory in MiB."""
    started = time.perf_counter()
    process = subprocess.Popen(command)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - started
    if status != 0:
        sys.exit(f"failed: {' '.join(command)}")
    return seconds, usage.ru_maxrss / 1024


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    qzlog, sizes = sys.argv[1], [int(size) for size in sys.argv[2:]] or SIZES
    print(f"{'entries':>9} {'source MiB':>11} {'seconds':>8} {'us/entry':>9} {'peak MiB':>9}")
    with tempfile.TemporaryDirectory(prefix="qzlog-compile.") as folder:
        source, output = pathlib.Path(folder) / "events.yaml", pathlib.Path(folder) / "events.ldf"
        for entries in sizes:
            write_source(source, entries)
            runs = [run([qzlog, "compile", str(source), "-o", str(output)]) for _ in range(RUNS)]
            seconds, memory = min(seconds for seconds, _ in runs), max(memory for _, memory in runs)
            print(f"{entries:>9} {source.stat().st_size / 2**20:>11.1f} {seconds:>8.3f} "
                  f"{seconds / entries * 1e6:>9.1f} {memory:>9.0f}")


if __name__ == "__main__":
    main()
