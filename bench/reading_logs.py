#!/usr/bin/env python3
"""Measures how fast qzlog reads logs, and in how much memory: what is shown, chosen and counted of a million lines.

Usage: reading_logs.py QZLOG MESSAGE_LOOP      the command, and the bare loop over the library

The lines are a sample of real logs where that is at hand, else generated ones of bench/events.yaml. Everything runs on one
processor, in turn; the median of the runs counts, in processor time. Two jobs have two processors, and the time that
passes counts.
"""
import collections
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

LINES = 1_000_000
ROUNDS = 7
JQ_ROUNDS = 3
MANY = 10
MEMORY_LIMIT_MIB = 64
MOST_LOGS = 500
HERE = pathlib.Path(__file__).resolve().parent
SAMPLE = HERE.parent.parent / "shared/corpora/HDFS/HDFS.jsonl"

# What the version before any choice or form took, in times of the loop.
DEFAULT_TARGET = 1.02
# How many times as fast two jobs are as one, on two processors.
JOBS_TARGET = 1.85
# By how much builds of the same code differ whose functions lie elsewhere.
NOISE = 0.02

Sample = collections.namedtuple("Sample", "source lines rare common group group_id number text")


def hdfs_sample():
    """`rare` and `common` are conditions that jq knows too; `rare` holds for no line. `group` is a text of `group_id`."""
    lines = SAMPLE.read_text(encoding="utf-8").splitlines()
    return Sample(SAMPLE.with_suffix(".yaml"), lines, ("P1", 7), ("P1", 2), "P2", 1010, "P4", "HDFS log lines, repeated")


def generated_sample():
    lines = []
    for i in range(2000):
        time = f"2026-11-{1 + i // 86:02}T{i // 4 % 24:02}:{i % 60:02}:{i * 7 % 60:02}Z"
        lines.append(f'{{"id":1003,"level":3,"time":"{time}","attributes":{{"Name":"volume-{i:04}","Blocks":{i * 7919},'
                     f'"Delta":{i - 1000},"Share":{i % 1000},"Label":"Größenprüfung in Köln läuft bis Mai"}}}}')
        lines.append(f'{{"id":1005,"time":"{time}","attributes":{{"Number":{i % 20 + 1}}}}}')
    return Sample(HERE / "events.yaml", lines, ("Number", 0), ("Number", 7), "Name", 1003, "Blocks",
                  "generated lines of bench/events.yaml, for the sample of real logs is not at hand")


def late_time(lines):
    """The time from which on at most a hundredth of the lines are."""
    times = sorted(line.split('"time":"')[1][:20] for line in lines)
    first = len(times) - len(times) // 100
    return next(time for time in times[first:] if time > times[first - 1])


class Bench:
    def __init__(self, qzlog, loop, folder):
        self.qzlog, self.loop, self.folder = qzlog, loop, folder
        self.sample = hdfs_sample() if SAMPLE.exists() else generated_sample()
        self.definitions = str(folder / "definitions.ldf")
        self.entries, self.few_entries = folder / "entries.jsonl", folder / "sample.jsonl"

    def prepare(self):
        subprocess.run([self.qzlog, "compile", str(self.sample.source), "-o", self.definitions], check=True,
                       stderr=subprocess.DEVNULL)
        write_lines(self.entries, self.sample.lines, LINES)
        write_lines(self.few_entries, self.sample.lines, len(self.sample.lines))

    def render(self, *options):
        return [self.qzlog, "render", "--definitions", self.definitions, *options]

    def stats(self, *options):
        return [self.qzlog, "stats", "--definitions", self.definitions, *options]

    def where(self, condition):
        return self.render("--where", f"{condition[0]} = {condition[1]}")

    def jq(self, condition):
        return ["jq", "-c", f"select(.attributes.{condition[0]} == {condition[1]})"]

    def commands(self):
        sample = self.sample
        commands = {
            "loop": [self.loop, self.definitions, "icu"],
            "loop, narrow": [self.loop, self.definitions, "narrow"],
            "default": self.render("--locale", "en_US"),
            "default, narrow": self.render("--no-icu"),
            "short": self.render("--locale", "en_US", "--output", "short"),
            "short, narrow": self.render("--no-icu", "--output", "short"),
            "rare": self.where(sample.rare),
            "common": self.where(sample.common),
            "since": self.render("--since", late_time(sample.lines)),
            "stats": self.stats(),
            "stats by level": self.stats("--by", "level"),
            "stats by group": self.stats("--by", sample.group, "--top", "10"),
        }
        return {name: [*command, str(self.entries)] for name, command in commands.items()}

    def check_choices(self):
        """Before anything is measured: the conditions hold for as many lines as jq finds."""
        for condition in self.sample.rare, self.sample.common:
            counts = [output_lines([*command, str(self.few_entries)])
                      for command in (self.where(condition), self.jq(condition))]
            if counts[0] != counts[1]:
                sys.exit(f"{condition[0]} = {condition[1]}: {counts[0]} lines, and {counts[1]} with jq")

    def measure(self):
        """Medians of seconds."""
        commands = self.commands()
        for name in "rare", "common":
            commands["jq " + name] = [*self.jq(getattr(self.sample, name)), str(self.entries)]
        seconds = collections.defaultdict(list)
        for turn in range(ROUNDS):
            for name in sorted(commands, reverse=turn % 2 == 1):
                if turn < JQ_ROUNDS or not name.startswith("jq "):
                    seconds[name].append(processor_seconds(commands[name]))
        return {name: statistics.median(values) for name, values in seconds.items()}


    def jobs_rows(self, processors):
        """Two jobs against one, in seconds that pass."""
        rows = []
        for title, option in ("render", ["--locale", "en_US"]), ("render, without ICU", ["--no-icu"]):
            seconds = collections.defaultdict(list)
            for turn in range(ROUNDS):
                for jobs in (1, 2) if turn % 2 == 0 else (2, 1):
                    command = [*self.render(*option), "--jobs", str(jobs), str(self.entries)]
                    seconds[jobs].append(passed_seconds(command, processors))
            one, two = (statistics.median(seconds[jobs]) for jobs in (1, 2))
            rows.append([f"{title}: two jobs against one", f"{LINES / two / 1e6:.2f} M", f"{one / two:.2f} x one job",
                         f">= {JOBS_TARGET}", verdict(one / two, JOBS_TARGET, False)])
        return rows


def write_lines(path, sample, count):
    text = "".join(line + "\n" for line in sample)
    with open(path, "w", encoding="utf-8") as file:
        for _ in range(count // len(sample)):
            file.write(text)
        file.writelines(line + "\n" for line in sample[:count % len(sample)])


def output_lines(command):
    result = subprocess.run(command, check=True, capture_output=True)
    return result.stdout.count(b"\n")


def processor_seconds(command):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"failed: {' '.join(command)}")
    return usage.ru_utime + usage.ru_stime


def passed_seconds(command, processors):
    begin = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                   preexec_fn=lambda: os.sched_setaffinity(0, processors))
    return time.monotonic() - begin


def mark(met):
    return "ok" if met else "MISSED"


def verdict(value, target, at_most, noise=0.0):
    return mark(round(value - noise, 2) <= target if at_most else value >= target)


def print_table(head, rows):
    table = [head, *rows]
    widths = [max(len(row[column]) for row in table) for column in range(len(head))]
    for number, row in enumerate(table):
        print("| " + " | ".join(text.ljust(width) for text, width in zip(row, widths)) + " |")
        if number == 0:
            print("|" + "|".join("-" * (width + 2) for width in widths) + "|")
    print()


def speed_rows(bench, seconds):
    def row(name, title, value, unit, target="", met=""):
        return [title, f"{LINES / seconds[name] / 1e6:.2f} M", f"{value:.2f} {unit}" if unit else "", target, met]

    def ratio_row(name, title, of, unit, target, at_most=True):
        value = seconds[name] / seconds[of] if at_most else seconds[of] / seconds[name]
        return row(name, title, value, unit, f"{'<=' if at_most else '>='} {target}", verdict(value, target, at_most))

    gigabytes = bench.entries.stat().st_size / 1e9 / seconds["since"]
    millions = LINES / seconds["stats"] / 1e6
    rows = [row("loop", "bare loop over the library", 1, "")]
    rows.append(row("loop, narrow", "bare loop, without ICU", 1, ""))
    for path, note in ("", ""), (", narrow", ", without ICU"):
        value = seconds["default" + path] / seconds["loop" + path]
        rows.append(row("default" + path, "render" + note, value, "x loop", f"<= {DEFAULT_TARGET} (+ {NOISE})",
                        verdict(value, DEFAULT_TARGET, True, NOISE)))
        rows.append(ratio_row("short" + path, "render --output short" + note, "default" + path, "x render", 1.5))
    for name in "rare", "common":
        title = "render --where '{} = {}'".format(*getattr(bench.sample, name))
        rows.append(ratio_row(name, title, "jq " + name, "x jq", 25, at_most=False))
    rows.append(row("since", "render --since, 1 % of the lines", gigabytes, "GB/s", ">= 0.7",
                    verdict(gigabytes, 0.7, False)))
    rows.append(row("stats", "stats by event", millions, "M lines/s", ">= 5", verdict(millions, 5, False)))
    rows.append(row("stats by level", "stats by level", 1, ""))
    rows.append(row("stats by group", f"stats by {bench.sample.group}", 1, ""))
    return rows


class Memory:
    """Peaks of memory, by what /usr/bin/time says of a process that it starts itself."""

    def __init__(self, bench):
        self.bench = bench
        self.report = bench.folder / "peak"

    def peak(self, command, source):
        """In MiB, of a command that reads what another one writes."""
        timed = ["/usr/bin/time", "-f", "%M", "-o", str(self.report), *command]
        with subprocess.Popen(source, stdout=subprocess.PIPE) as lines:
            subprocess.run(timed, stdin=lines.stdout, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        return int(self.report.read_text(encoding="ascii").split()[-1]) / 1024

    def row(self, title, command):
        entries = str(self.bench.entries)
        return self.peaks_row(title, [self.peak(command, ["cat", *[entries] * copies]) for copies in (1, MANY)])

    def different_row(self, title, command):
        """Of lines of which each has a number and a value of its own, and no number follows another one."""
        sample = self.bench.sample
        line = (r'{\"writer\":\"web1/4711/1795248900\",\"seq\":%d,\"id\":' + str(sample.group_id) +
                r',\"attributes\":{\"' + sample.group + r'\":\"%d\"}}\n')
        program = 'BEGIN { for (i = 0; i < lines; ++i) printf "' + line + '", 2 * i, i }'
        return self.peaks_row(title, [self.peak(command, ["awk", "-v", f"lines={LINES * copies}", program])
                                      for copies in (1, MANY)])

    def merge_row(self, log, logs, column):
        command = [*self.bench.render("--merge-by-time"), *[str(log)] * logs]
        row = self.peaks_row(f"render --merge-by-time, {logs} logs", [self.peak(command, ["true"])])
        return row if column == 1 else [row[0], row[2], row[1], *row[3:]]

    @staticmethod
    def peaks_row(title, peaks):
        texts = [f"{peak:.1f} MiB" for peak in peaks]
        return [title, *texts, *[""] * (2 - len(texts)), f"<= {MEMORY_LIMIT_MIB} MiB", mark(max(peaks) <= MEMORY_LIMIT_MIB)]

    def rows(self):
        bench, sample = self.bench, self.bench.sample
        columns = f"time,id,{sample.group},{sample.number},message"
        rows = [self.row("render", bench.render("--locale", "en_US"))]
        rows.append(self.row("render --jobs 2", bench.render("--locale", "en_US", "--jobs", "2")))
        rows.append(self.row("render, without ICU", bench.render("--no-icu")))
        for form in "short", "long", "json":
            rows.append(self.row(f"render --output {form}", bench.render("--output", form)))
        for form in "table", "csv":
            rows.append(self.row(f"render --output {form}", bench.render("--output", form, "--columns", columns)))
        rows.append(self.row("render --where", bench.where(sample.common)))
        rows.append(self.row("render --since", bench.render("--since", late_time(sample.lines))))
        rows.append(self.row("render --tail 50000", bench.render("--tail", "50000")))
        rows.append(self.row("render --tail 1000000", bench.render("--tail", "1000000")))
        rows.append(self.different_row("render --unique", bench.render("--unique")))
        rows.append(self.merge_row(bench.few_entries, MOST_LOGS, 1))
        rows.append(self.merge_row(bench.entries, MANY, 2))
        rows.append(self.row("stats by event", bench.stats()))
        by_group = bench.stats("--by", sample.group, "--top", "10")
        rows.append(self.row(f"stats by {sample.group}", by_group))
        rows.append(self.different_row(f"stats by {sample.group}, each different", by_group))
        rows.append(self.row(f"stats of {sample.number}", bench.stats("--of", sample.number)))
        return rows


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    processors = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {max(processors)})
    with tempfile.TemporaryDirectory(prefix="qzlog-reading.") as folder:
        bench = Bench(sys.argv[1], sys.argv[2], pathlib.Path(folder))
        bench.prepare()
        bench.check_choices()
        print(f"Reading logs: {LINES:,} lines ({bench.sample.text}), one core; medians of {ROUNDS} runs in turn\n")
        print_table(["", "lines/s", "", "target", ""], speed_rows(bench, bench.measure()))
        if len(processors) > 1:
            print_table(["", "lines/s", "", "target", ""], bench.jobs_rows(processors))
        else:
            print("Several jobs are not measured: there is one processor\n")
        print_table(["peak memory", "1 M lines", "10 M lines", "target", ""], Memory(bench).rows())


if __name__ == "__main__":
    main()
