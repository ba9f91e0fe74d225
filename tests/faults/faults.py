#!/usr/bin/env python3
"""Lets things fail and looks at what comes of it.

Usage: faults.py BUILD_DIR [SUBSET [REGEX]] [--short] [--at N] [--jobs N] [--output DIR]

  SUBSET   memory, calls, processes, descriptors or stacks; all of them by default
  REGEX    only the scenarios whose names match; --list shows them
  --short  a sample of the points, the same in every run
  --at N   only this point, as a finding names it

Prints a table of points and outcomes for each subset, with what is wrong behind it, and writes both to DIR/SUBSET.txt
(BUILD_DIR/../faults by default). Exit status: 0 nothing is wrong; 1 something is; 2 wrong usage; 77 nothing can be tried here.
"""
import argparse
import pathlib
import re
import sys
import tempfile
import time

import call_points
import descriptor_points
import material
import memory_points
import process_points
import runners
import scenarios
import stack_points
import table
import work

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent
NOTHING_TO_TRY = 77

# An entry that there is no memory for is told and settled as one that cannot be read, so that a group does not get it again.
COMMANDS_WITHOUT_MEMORY = [scenario for scenario in scenarios.COMMANDS if not scenario.hands_over]

SUBSETS = {
    "memory": (memory_points, COMMANDS_WITHOUT_MEMORY + scenarios.CHILDREN[:1] + scenarios.PROGRAMS),
    "calls": (call_points, scenarios.COMMANDS + scenarios.CHILDREN + scenarios.PROGRAMS),
    "processes": (process_points, process_points.SCENARIOS),
    "descriptors": (descriptor_points, scenarios.COMMANDS),
    "stacks": (stack_points, stack_points.SCENARIOS),
}


def main():
    options = read_options()
    tools = runners.Tools(options.build.resolve())
    if not tools.can_trace():
        print("skipped: there is no fault_run for this processor, or processes may not be traced here")
        return NOTHING_TO_TRY
    if options.list:
        list_scenarios()
        return 0
    with tempfile.TemporaryDirectory(prefix="faults-") as folder:
        tree = material.make_material(tools, SOURCE / "examples", pathlib.Path(folder, "material"))
        with work.Pool(tools, tree, folder, options.jobs) as pool:
            tables = [run_subset(pool, name, options) for name in options.subsets]
    if not any(tried.total() for tried in tables):
        print("faults.py: no scenario matches", file=sys.stderr)
        return 2
    return 1 if any(tried.bad() for tried in tables) else 0


def read_options():
    parser = argparse.ArgumentParser(usage=__doc__, add_help=False)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("subset", nargs="?", choices=[*SUBSETS, []], default=[])
    parser.add_argument("regex", nargs="?", type=re.compile, default="")
    parser.add_argument("--short", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--at", type=int, default=0)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--output", type=pathlib.Path)
    options = parser.parse_args()
    options.subsets = [options.subset] if options.subset else list(SUBSETS)
    options.output = options.output or options.build / "../faults"
    return options


def list_scenarios():
    for name, (_, chosen) in SUBSETS.items():
        print(name + ":", *(scenario.name for scenario in chosen))


def run_subset(pool, name, options):
    started = time.monotonic()
    module, chosen = SUBSETS[name]
    chosen = [scenario for scenario in chosen if re.search(options.regex, scenario.name)]
    plans = pool.plan(module, chosen)
    works = [one for scenario, plan in zip(chosen, plans) for one in module.works(scenario, plan, options.short, options.at)]
    tried = table.Table(name)
    try:
        for done, (scenario, what, verdicts) in enumerate(pool.run(works), 1):
            for point, verdict, hit in verdicts:
                tried.add(scenario, what, point, verdict, hit)
            show_progress(name, done, len(works))
    finally:
        # Whoever interrupts a long run sees what was tried until then.
        report(tried, time.monotonic() - started, options)
    return tried


def show_progress(name, done, of):
    if sys.stderr.isatty():
        print(f"\r{name}: {100 * done // of} %", end="\r" if done < of else "\r\033[K", file=sys.stderr, flush=True)


def report(tried, seconds, options):
    proofs = tried.proofs_text()
    options.output.mkdir(parents=True, exist_ok=True)
    texts = [tried.text(), tried.findings_text(), proofs and "What is ICU's own, without memory:\n" + proofs]
    (options.output / f"{tried.subset}.txt").write_text("\n\n".join(filter(None, texts)) + "\n", encoding="utf-8")
    texts[1] = tried.findings_text(table.SHOWN_OF_A_ROW)
    print(f"== {tried.subset}: {tried.total()} points in {seconds:.0f} s, {tried.bad()} wrong\n")
    print("\n\n".join(filter(None, texts)), flush=True)


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit("faults.py: interrupted")
