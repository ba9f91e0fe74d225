#!/usr/bin/env python3
"""Counts instructions per operation with callgrind, and compares them with what was committed.

Usage: instructions.py PROGRAM                 prints the table
       instructions.py PROGRAM --check         and fails where a ratio is worse than the baseline allows
       instructions.py PROGRAM --update        and writes the ratios down as the new baseline
       instructions.py PROGRAM --output FILE   and writes the ratios to a file

Each case runs in a process of its own, so many times and twice as many: what remains of the difference is the operation
alone, without start-up and first use. The ratio of qzlog to its peer is what counts, for that hardly depends on the machine.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import typing

BASELINE = pathlib.Path(__file__).with_name("instructions.json")
REPEATS = 1000
# By how much a ratio may exceed the baseline: what different processors' string functions make of it.
TOLERANCE = 1.03


class Gate(typing.NamedTuple):
    """A case, the peers that it is measured by as pairs of factor and case, and the target for their ratio."""
    name: str
    case: str
    peers: list
    peer_text: str
    target: float


def against(name, case, peer, target):
    """A gate whose peer stands in the same group as the case."""
    return Gate(name, case, [(1.0, f"{case.rsplit('/', 1)[0]}/{peer}")], peer, target)


GATES = [
    against("A narrow", "A/narrow/qzlog", "fmt", 1.5),
    against("B narrow", "B/narrow/qzlog", "fmt", 1.6),
    against("C narrow", "C/narrow/qzlog", "fmt", 1.45),
    against("A ICU, plain", "A/icu_plain/qzlog", "MessageFormat_kept", 0.5),
    against("B ICU, plain", "B/icu_plain/qzlog", "MessageFormat_kept", 0.55),
    against("C ICU, plain", "C/icu_plain/qzlog", "MessageFormat_kept", 0.5),
    against("A line", "A/line/qzlog", "rapidjson", 0.31),
    against("C line", "C/line/qzlog", "rapidjson", 0.32),
    against("formats ICU", "formats/en/qzlog", "MessageFormat_kept", 1.1),
    Gate("D by its level", "D/narrow_before_attributes/qzlog",
         [(1.0, "operation/construct"), (0.8, "D/disabled/spdlog")], "construction, 0.8 x disabled spdlog", 1.0),
    Gate("D after attributes", "D/narrow_after_attributes/qzlog", [(1.0, "A/narrow/spdlog")], "spdlog", 0.65),
]

# What must not call ICU.
WITHOUT_ICU = ["D/icu_before_attributes/qzlog", "D/icu_after_attributes/qzlog"]


def run_under_callgrind(program, case, count, profile="/dev/null"):
    """All instructions of a process that does nothing but the case."""
    command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", program, "--once", case, str(count)]
    result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    found = re.search(r"Collected *: *(\d+)", result.stderr)
    if result.returncode != 0 or not found:
        sys.exit(f"instructions.py: {case} failed under callgrind:\n{result.stderr}")
    return int(found.group(1))


def run_counting_icu(program, case, count):
    """Those of ICU's libraries alone."""
    with tempfile.TemporaryDirectory() as folder:
        profile = os.path.join(folder, "profile")
        run_under_callgrind(program, case, count, profile)
        listing = subprocess.run(["callgrind_annotate", "--threshold=100", "--auto=no", profile],
                                 capture_output=True, text=True, check=True).stdout
    costs = re.findall(r"^ *([\d,]+) .*\[\S*/libicu\S*\]$", listing, re.MULTILINE)
    return sum(int(cost.replace(",", "")) for cost in costs)


def per_operation(run, program, cases):
    """Case name to instructions, as `run` counts them."""
    runs = [(case, count) for case in cases for count in (REPEATS, 2 * REPEATS)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        totals = dict(zip(runs, pool.map(lambda arguments: run(program, *arguments), runs)))
    return {case: (totals[case, 2 * REPEATS] - totals[case, REPEATS]) / REPEATS for case in cases}


def cases_of_gates():
    return sorted({gate.case for gate in GATES} | {case for gate in GATES for _, case in gate.peers})


def peer_instructions(gate, counts):
    return sum(factor * counts[case] for factor, case in gate.peers)


def ratios_of(counts):
    return {gate.name: counts[gate.case] / peer_instructions(gate, counts) for gate in GATES}


def print_table(counts, ratios, icu_counts):
    print(f"{'instructions per operation':28}{'qzlog':>9}  {'peer':38}{'peer':>9}{'ratio':>8}{'target':>8}")
    for gate in GATES:
        ratio = ratios[gate.name]
        print(f"{gate.name:28}{counts[gate.case]:9.0f}  {gate.peer_text:38}{peer_instructions(gate, counts):9.0f}"
              f"{ratio:8.3f}{gate.target:8.2f}  {'ok' if ratio <= gate.target else 'MISSED'}")
    for case, count in icu_counts.items():
        print(f"{case}: {count:.0f} instructions in ICU, {'ok' if count == 0 else 'MISSED'}")


def find_regressions(ratios, baseline):
    """The gates whose ratio is worse than the baseline allows, as texts. A target that the baseline meets is kept."""
    findings = []
    for gate in GATES:
        committed = baseline.get(gate.name)
        if committed is None:
            findings.append(f"{gate.name}: no baseline; run ./dev bench --instructions --update")
            continue
        limit = committed * TOLERANCE
        if committed <= gate.target:
            limit = min(limit, gate.target)
        if ratios[gate.name] > limit:
            findings.append(f"{gate.name}: {ratios[gate.name]:.3f} x {gate.peer_text}, baseline {committed:.3f}, "
                            f"at most {limit:.3f}")
    return findings


def find_icu_calls(icu_counts):
    return [f"{case}: calls ICU" for case, count in icu_counts.items() if count != 0]


def check(ratios, icu_counts):
    findings = find_regressions(ratios, json.loads(BASELINE.read_text(encoding="utf-8"))) + find_icu_calls(icu_counts)
    for finding in findings:
        print(f"instructions.py: {finding}", file=sys.stderr)
    return 1 if findings else 0


def write(ratios, path):
    path.write_text(json.dumps({name: round(ratio, 4) for name, ratio in ratios.items()}, indent=2) + "\n",
                    encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    mode = parser.add_mutually_exclusive_group()
    mode.add_argument("--check", action="store_true")
    mode.add_argument("--update", action="store_true")
    mode.add_argument("--output", type=pathlib.Path)
    options = parser.parse_args()
    counts = per_operation(run_under_callgrind, options.program, cases_of_gates())
    icu_counts = per_operation(run_counting_icu, options.program, WITHOUT_ICU)
    ratios = ratios_of(counts)
    print_table(counts, ratios, icu_counts)
    if options.check:
        return check(ratios, icu_counts)
    if options.update or options.output:
        write(ratios, options.output or BASELINE)
    return 0


if __name__ == "__main__":
    sys.exit(main())
