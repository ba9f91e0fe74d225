#!/usr/bin/env python3
"""Prints what the benchmarks measured beside the targets, as tables.

Usage: report.py MEASUREMENTS.json... [--instructions RATIOS.json]

The measurements are Google Benchmark's, with medians of repetitions; the ratios are those of instructions.py --output.
"""
import argparse
import json
import re
import sys

# By how much a cost that does not grow may differ between small and large: what the processor's caches make of it, and
# the file system of a large file, into whose pages a write takes longer.
SAME = 1.5
SAME_WITH_LARGE_FILES = 3.0


class Measurements:
    """Medians by case name, as it stands in the sources."""

    def __init__(self, paths):
        self.cases = {}
        for path in paths:
            with open(path, encoding="utf-8") as file:
                for entry in json.load(file)["benchmarks"]:
                    if entry.get("aggregate_name") == "median":
                        self.cases[re.sub(r"/iterations:\d+", "", entry["run_name"])] = entry

    def time(self, case):
        """Nanoseconds of processor time per operation."""
        return self.cases[case]["cpu_time"]

    def ratio(self, case, peer):
        return self.time(case) / self.time(peer)

    def counter(self, case, name):
        return self.cases[case][name]

    def allocations(self, case):
        return round(self.counter(case, "allocs"), 2)


class Verdict:
    """Marks figures, and counts those that miss their target."""

    def __init__(self):
        self.missed = 0

    def mark(self, met):
        self.missed += not met
        return "ok" if met else "MISSED"

    def at_most(self, figure, target, unit=" x"):
        shown = f"{figure:.2f}".rstrip("0").rstrip(".")
        return f"{shown}{unit} of {target:g}{unit} {self.mark(figure <= target)}"

    def fraction(self, figure, target):
        """At most one n-th, said as the n."""
        return f"1/{figure:.1f} of 1/{target:g} {self.mark(figure >= target)}"


def print_table(title, header, rows):
    rows = [header] + [[str(cell) for cell in row] for row in rows]
    widths = [max(len(row[i]) for row in rows) for i in range(len(header))]
    print(f"\n{title}\n")
    for number, row in enumerate(rows):
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
        if number == 0:
            print("|" + "|".join("-" * (width + 2) for width in widths) + "|")


def nanoseconds(value):
    return f"{value:.1f} ns" if value < 100 else f"{value:.0f} ns" if value < 1000 else f"{value:,.0f} ns"


NARROW_PEERS = ["fmt", "snprintf", "spdlog", "variant_map", "boost_log", "json"]
NARROW_TARGETS = {  # times in the order of the peers, then allocations
    "A": ([1.75, 0.8, 1.05, 0.25, 0.18, 0.18], 2),
    "B": ([2.3, 1.35, 0.8, 0.35, 0.16, 0.18], 2),
    "C": ([1.6, 0.85, 1.25, 0.21, 0.18, 0.18], 3),
}
INSTRUCTION_TARGETS = {"A": 1.5, "B": 1.6, "C": 1.45}


def narrow_table(measured, instructions, verdict):
    rows = []
    for workload, (targets, allocations) in NARROW_TARGETS.items():
        case = f"{workload}/narrow/qzlog"
        cells = [verdict.at_most(measured.ratio(case, f"{workload}/narrow/{peer}"), target)
                 for peer, target in zip(NARROW_PEERS, targets)]
        if instructions:
            cells.insert(1, verdict.at_most(instructions[f"{workload} narrow"], INSTRUCTION_TARGETS[workload]))
        rows.append([f"{workload} narrow", nanoseconds(measured.time(case)), *cells,
                     verdict.at_most(measured.allocations(case), allocations, "")])
    header = ["", "qzlog", "fmt", "snprintf", "spdlog", "map+variant+fmt", "Boost.Log", "json", "allocations"]
    if instructions:
        header.insert(3, "fmt, instructions")
    print_table("The whole job on the narrow path, in multiples of its peers", header, rows)


LINE_PEERS = {"nlohmann": 0.12, "rapidjson": 0.25}
LINE_NANOSECONDS = 50


def line_table(measured, verdict):
    rows = []
    for workload in ("A", "B", "C"):
        group = f"{workload}/line"
        added = measured.time(f"{group}/qzlog_with_build") - measured.time(f"{group}/build")
        row = [workload, nanoseconds(measured.time(f"{group}/qzlog")), nanoseconds(added)]
        if workload == "A":
            row[2] = f"{nanoseconds(added)} of {LINE_NANOSECONDS} ns {verdict.mark(added <= LINE_NANOSECONDS)}"
            row += [verdict.at_most(measured.ratio(f"{group}/qzlog", f"{group}/{peer}"), target)
                    for peer, target in LINE_PEERS.items()]
        else:
            row += [f"{measured.ratio(f'{group}/qzlog', f'{group}/{peer}'):.2f} x" for peer in LINE_PEERS]
        rows.append([*row, verdict.at_most(measured.allocations(f"{group}/qzlog"), 0, "")])
    print_table("An entry as a line of JSON, in multiples of its peers",
                ["", "AppendJson", "on top of building", "nlohmann dump", "RapidJSON Writer", "allocations"], rows)


# Row, group of cases, targets for MessageFormat kept and (as n of 1/n) made per message.
PLAIN = (0.5, 28)
OTHER = (1.1, 12)
NUMBER = (0.4, 12)
FLOAT = (0.35, 12)
ICU_ROWS = (
    [("A, plain and d", "A/icu_plain", PLAIN), ("C, plain and d", "C/icu_plain", PLAIN), ("B", "B/icu_plain", (0.55, 45)),
     ("A with its number as f", "A/icu_float", FLOAT), ("C with its number as f", "C/icu_float", OTHER)]
    + [(f"A, plain and d, {language}", f"plain/{language}", PLAIN) for language in ("de", "ar", "ja")]
    + [(f"A, plain and d, catalog, {language}", f"catalog/{language}", PLAIN) for language in ("en", "de", "ar", "ja")]
    + [(f"number, currency, percent, date, time, {language}", f"formats/{language}", OTHER)
       for language in ("en", "de", "ar", "ja")]
    + [(f"A with its number as f, {language}", f"float/{language}", FLOAT) for language in ("de", "ar", "ja")]
    + [(kind, f"{kind}/en", NUMBER if kind in ("number", "percent") else OTHER)
       for kind in ("number", "currency", "percent", "date", "time")])


def icu_table(measured, verdict):
    rows = []
    for name, group, (kept, per_message) in ICU_ROWS:
        case = f"{group}/qzlog"
        rows.append([name, nanoseconds(measured.time(case)),
                     verdict.at_most(measured.ratio(case, f"{group}/MessageFormat_kept"), kept),
                     verdict.fraction(1 / measured.ratio(case, f"{group}/MessageFormat_per_message"), per_message),
                     measured.allocations(case)])
    print_table("The whole job on the ICU path, in multiples of its peers",
                ["", "qzlog", "MessageFormat kept", "MessageFormat per message", "allocations"], rows)


def information_table(measured):
    """Figures beside stricter readings of the targets."""
    rows = []
    for workload in ("A", "C"):
        narrow, icu = f"{workload}/narrow", f"{workload}/icu_float"
        rows.append([workload, f"{measured.ratio(f'{narrow}/qzlog', f'{narrow}/fmt_shortest'):.2f} x",
                     f"{measured.ratio(f'{icu}/qzlog', f'{icu}/MessageFormat_kept'):.2f} x",
                     f"1/{measured.ratio(f'{icu}/MessageFormat_per_message', f'{icu}/qzlog'):.1f}"])
    print_table("For information: fmt writing 0.875 and not 0.875000, another text; and what A and C with their number as f "
                "are\nbeside the targets of plain arguments, 0.5 x and 1/28",
                ["", "fmt, other text", "MessageFormat kept", "MessageFormat per message"], rows)


def sink_table(measured, verdict):
    def counter(name):
        return measured.counter("sink/lines", name)
    rows = []
    for way, peer, least in (("write", "floor", 0.75), ("shared", "spdlog", 2.0), ("buffered", "spdlog", 2.2)):
        speed = counter(f"{peer}_ns") / counter(f"{way}_ns")
        pause = counter(f"{way}_pause_ms") - counter("floor_pause_ms")
        rows.append([way, nanoseconds(counter(f"{way}_ns")), f"{speed:.2f} x {peer} of {least:g} x {verdict.mark(speed >= least)}",
                     f"{pause:.2f} ms of 3 ms {verdict.mark(pause <= 3)}"])
    rows.append(["refused by Wants", nanoseconds(measured.time("sink/refused/qzlog")),
                 f"1 ns {verdict.mark(measured.time('sink/refused/qzlog') <= 1)}", ""])
    print_table(f"Entries of A built and written, lines per second in multiples of spdlog's rotating sink "
                f"({nanoseconds(counter('spdlog_ns'))})\nand of a loop of write ({nanoseconds(counter('floor_ns'))}); the longest pause beyond "
                "that of the loop", ["", "per line", "lines per second", "longest pause"], rows)


def journal_table(measured, verdict):
    def counter(name):
        return measured.counter("journal/entries", name)
    rows = []
    if counter("has_journald"):
        ratio = counter("journald_floor_ns") / counter("journald_sink_ns")
        rows.append(["journald", nanoseconds(counter("journald_sink_ns")), nanoseconds(counter("journald_floor_ns")),
                     f"{ratio:.2f} x of 0.8 x {verdict.mark(ratio >= 0.8)}"])
    rows.append(["a thread that only reads", nanoseconds(counter("sink_ns")), nanoseconds(counter("floor_ns")),
                 f"{counter('floor_ns') / counter('sink_ns'):.2f} x, for information"])
    print_table(f"Entries of A built, rendered and sent to a journal, {counter('message_bytes'):.0f} bytes each, beside a plain sender of "
                "the same bytes", ["receiver", "per entry", "plain sender", "entries per second"], rows)


def syslog_table(measured):
    def counter(name):
        return measured.counter("syslog/tcp", name)
    rows = [[what, nanoseconds(counter(name)), f"{counter('plain_ns') / counter(name):.2f} x"]
            for what, name in (("Write", "sink_ns"), ("built and written", "built_ns"))]
    print_table(f"For information: entries of A as messages of syslog over TCP, {counter('bytes'):.0f} bytes each, to a server that only "
                f"reads, in\nmultiples of a loop of send with the same bytes ({nanoseconds(counter('plain_ns'))}). Servers that take messages "
                "apart are slower than either", ["", "per message", "messages per second"], rows)


def otlp_table(measured, verdict):
    if "ship/otlp" not in measured.cases:
        return

    def row(name, encoding, body):
        speed = measured.counter("ship/otlp", name)
        return [encoding, body, f"{speed:,.0f} of 100,000 {verdict.mark(speed >= 100000)}"]
    rows = [row("protobuf", "protobuf", "without"), row("protobuf_body", "protobuf", "with"),
            row("json", "json", "without"), row("json_body", "json", "with")]
    print_table(f"Lines of A, {measured.counter('ship/otlp', 'line_bytes'):.0f} bytes each, through the plug-in for OTLP with typed "
                "attributes, to a receiver that only\nreads, with and without the message as body", ["encoding", "body", "entries per second"],
                rows)


def nats_table(measured, verdict):
    """Measured by a program of its own, which is built where libnats is, and runs where nats-server is."""
    if "nats/group" not in measured.cases:
        return
    rows = []
    for replicas, where in (("1", "one server"), ("3", "three replicas")):
        def counter(name, case=f"nats/send/{replicas}"):
            return measured.counter(case, name)
        ratio = counter("per_second") / counter("plain_per_second")
        rows.append([where, f"{counter('per_second'):,.0f}/s", f"{counter('plain_per_second'):,.0f}/s",
                     f"{ratio:.2f} x of 0.65 x {verdict.mark(ratio >= 0.65)}"])
    print_table(f"Records of {measured.counter('nats/send/1', 'bytes'):.0f} bytes sent to NATS and acknowledged, beside the plain C client "
                "with the same bytes", ["", "plug-in", "plain client", ""], rows)
    faster = measured.counter("nats/group", "faster")
    share = measured.counter("nats/group", "larger_share")
    print_table("Two readers of a group with 50 us of work for each record, beside one",
                ["one reader", "two readers", "the larger part"],
                [[f"{measured.counter('nats/group', 'alone_per_second'):,.0f}/s", f"{faster:.2f} x of 1.7 x {verdict.mark(faster >= 1.7)}",
                  f"{share:.0%} of 60% {verdict.mark(share <= 0.6)}"]])


def kafka_table(measured, verdict):
    """Measured by a program of its own, which is built where librdkafka is."""
    if "kafka/send" not in measured.cases:
        return

    def counter(name):
        return measured.counter("kafka/send", name)
    ratio = counter("per_second") / counter("plain_per_second")
    print_table(f"Records of {counter('bytes'):.0f} bytes sent to Kafka and acknowledged, beside librdkafka alone with the same bytes",
                ["plug-in", "librdkafka", ""],
                [[f"{counter('per_second'):,.0f}/s", f"{counter('plain_per_second'):,.0f}/s",
                  f"{ratio:.2f} x of 0.6 x {verdict.mark(ratio >= 0.6)}"]])


def refused_table(measured, verdict):
    construct = "operation/construct"
    limit = measured.time(construct) + 0.8 * measured.time("D/disabled/spdlog")
    rows = []
    for path in ("narrow", "icu"):
        before, after = (f"D/{path}_{when}_attributes/qzlog" for when in ("before", "after"))
        rows.append([f"D, {path}, by its level", nanoseconds(measured.time(before)),
                     f"{nanoseconds(limit)}: construction and 0.8 x spdlog's disabled call",
                     verdict.mark(measured.time(before) <= limit),
                     verdict.at_most(measured.allocations(before), measured.allocations(construct), "")])
        rows.append([f"D, {path}, after five attributes", nanoseconds(measured.time(after)),
                     "0.65 x spdlog's formatted call", verdict.at_most(measured.ratio(after, "A/narrow/spdlog"), 0.65),
                     measured.allocations(after)])
    print_table("Refused by the filter", ["", "qzlog", "target", "", "allocations"], rows)


def thread_table(measured, verdict):
    rows = []
    for path in ("narrow", "icu_plain"):
        for ids in ("same_id", "different_ids"):
            ratio = measured.counter(f"threads/{path}/{ids}", "of_one")
            rounds = round(measured.counter(f"threads/{path}/{ids}", "rounds"))
            mark = verdict.mark(ratio >= 1.85) if rounds > 5 else "the machine has no two processors to give"
            rows.append([f"A, {path}, {ids.replace('_', ' ')}", f"{ratio:.2f} x", "1.85 x", mark,
                         f"{measured.counter(f'threads/{path}/{ids}', 'of_one_fmt'):.2f} x", f"{rounds} of 75"])
    print_table("Messages per second of two threads, in multiples of one thread, where fmt shows two processors",
                ["", "qzlog", "at least", "", "fmt", "rounds"], rows)


def lookup_table(measured, verdict):
    lock = measured.time("floor/reader_lock")
    rows = []
    for case in ("filter/with_source", "configuration/own_section", "configuration/global_section",
                 "configuration/absent"):
        rows.append([case.replace("/", ", ").replace("_", " "), nanoseconds(measured.time(case)),
                     verdict.at_most(measured.time(case) / lock, 8),
                     verdict.at_most(measured.allocations(case), 0, "")])
    print_table(f"Filter and configuration, in multiples of a reader lock taken and released ({nanoseconds(lock)})",
                ["", "qzlog", "reader lock", "allocations"], rows)


def growth_row(measured, verdict, name, group, sizes, limit, per_item=False):
    times = [measured.time(f"{group}/{size}") / (size if per_item else 1) for size in sizes]
    shown = ", ".join(f"{size:,}: {nanoseconds(time)}" for size, time in zip(sizes, times))
    return [name, shown, verdict.at_most(times[-1] / times[0], limit)]


def growth_table(measured, verdict):
    files = [1000, 10000, 100000, 1000000]
    records = [100, 10000, 1000000]
    attributes = [5, 50, 255]

    def row(*arguments, **options):
        return growth_row(measured, verdict, *arguments, **options)
    print_table("Cost that does not grow: the last size in multiples of the first", ["", "by size", "growth"], [
        row("definition file loaded, per ID", "load", files, SAME_WITH_LARGE_FILES, per_item=True),
        row("entry of an ID at hand", "lookup/present", files, SAME),
        row("entry of an ID that is not there", "lookup/absent", files, SAME),
        row("entry of an evicted ID", "lookup/evicted", files, SAME_WITH_LARGE_FILES),
        row("attribute replaced", "attributes/replace", attributes, SAME),
        row("attribute read", "attributes/read", attributes, SAME),
        row("counter, keys in turn", "counter/alternating", records, SAME_WITH_LARGE_FILES),
        row("counter, new key", "counter/new", records, SAME_WITH_LARGE_FILES),
    ])


# Row, case, targets narrow and through ICU. The others are for information.
ROTATION_ROWS = (
    ("1,000 in turn", "1000_in_turn", (None, None)), ("1,000 in random order", "1000_random", (2, 1.5)),
    ("100,000 in turn, 1 GiB", "100000_in_turn", (3, 2)), ("100,000 in random order, 1 GiB", "100000_random", (5, 2)),
    ("100,000 in turn, 32 MiB", "100000_in_turn_default_memory", (None, None)),
    ("100,000 in random order, 32 MiB", "100000_random_default_memory", (None, None)))


def rotation_table(measured, verdict):
    floor = measured.time("rotation/floor/two_dependent_reads")

    def cell(path, case, target):
        ratio = measured.ratio(f"rotation/{path}/{case}", f"rotation/{path}/one")
        return verdict.at_most(ratio, target) if target else f"{ratio:.2f} x"
    rows = [["one ID", nanoseconds(measured.time("rotation/narrow/one")), "", nanoseconds(measured.time("rotation/icu/one")), ""]]
    for name, case, targets in ROTATION_ROWS:
        row = [name]
        for path, target in zip(("narrow", "icu"), targets):
            row += [nanoseconds(measured.time(f"rotation/{path}/{case}")), cell(path, case, target)]
        rows.append(row)
    floors = [(measured.time(f"rotation/{path}/one") + floor) / measured.time(f"rotation/{path}/one") for path in ("narrow", "icu")]
    rows.append(["one ID and two reads that memory has to answer", "", f"{floors[0]:.2f} x", "", f"{floors[1]:.2f} x"])
    print_table(f"The whole job of A over many IDs, each with a text of its own, in multiples of one ID. Two reads of which one needs "
                f"the other,\nsomewhere in the memory of 100,000 definitions, take {nanoseconds(floor)} here",
                ["IDs, memory allowed", "narrow", "", "ICU", ""], rows)


def memory_table(measured, verdict):
    rows = [["entry with five attributes", f"{measured.counter('memory/entry', 'bytes'):.0f} bytes",
             verdict.at_most(measured.counter("memory/entry", "bytes"), 1024, " bytes")]]
    for name, case in (("128 definitions, entries constructed", "memory/definitions_constructed/128"),
                       ("1,000 definitions, file loaded", "memory/definitions_loaded/1000"),
                       ("1,000,000 definitions, file loaded", "memory/definitions_loaded/1000000")):
        size = measured.counter(case, "bytes")
        rows.append([name, f"{size:,.0f} bytes", verdict.at_most(size / measured.counter(case, "file_bytes"), 3)])
    rendered = "memory/definitions_rendered/128"
    size = measured.counter(rendered, "bytes")
    rows.append(["128 definitions with what was made ready to render their messages", f"{size:,.0f} bytes",
                 f"{size / measured.counter(rendered, 'file_bytes'):.2f} x, for information"])
    print_table("Heap: definitions in multiples of their file", ["", "qzlog", "target"], rows)


def step_table(measured):
    groups = ("operation", "find_entry", "add_and_remove", "replace", "read", "filter", "debug_log", "floor")
    rows = [[case, nanoseconds(entry["cpu_time"]), round(entry["allocs"], 2)]
            for case, entry in sorted(measured.cases.items()) if case.split("/")[0] in groups]
    rows.append(["A/narrow with 1,000 definitions in turn", nanoseconds(measured.time("A/narrow_1000_definitions/qzlog")),
                 measured.allocations("A/narrow_1000_definitions/qzlog")])
    print_table("Single steps", ["", "time", "allocations"], rows)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("measurements", nargs="+")
    parser.add_argument("--instructions")
    options = parser.parse_args()
    measured = Measurements(options.measurements)
    instructions = {}
    if options.instructions:
        with open(options.instructions, encoding="utf-8") as file:
            instructions = json.load(file)
    verdict = Verdict()
    narrow_table(measured, instructions, verdict)
    icu_table(measured, verdict)
    line_table(measured, verdict)
    information_table(measured)
    refused_table(measured, verdict)
    sink_table(measured, verdict)
    journal_table(measured, verdict)
    syslog_table(measured)
    otlp_table(measured, verdict)
    nats_table(measured, verdict)
    kafka_table(measured, verdict)
    thread_table(measured, verdict)
    lookup_table(measured, verdict)
    growth_table(measured, verdict)
    rotation_table(measured, verdict)
    memory_table(measured, verdict)
    step_table(measured)
    print(f"\n{verdict.missed} figures miss their target." if verdict.missed else "\nEvery figure meets its target.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
