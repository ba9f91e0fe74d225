"""What is run while something fails: the commands, and the programs of the folder scenarios/ that use the library."""
import dataclasses
import json
import pathlib
import struct

import folders

PROGRAM = "fault_scenarios"
MANUALS = "qzlog_command_docs"
DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"
COLD, WARM = "/cold", "/warm"


@dataclasses.dataclass(frozen=True)
class Scenario:
    name: str
    arguments: tuple
    files: tuple = ()          # what of the material stands in its folder: files, or folders with all below
    input: str = ""            # the file that is its standard input
    program: str = "qzlog"     # in which one something fails
    marked: bool = False       # a program that marks its operation and says what it saw
    executable: str = ""       # another program of ours instead of the command
    writes: bool = False       # it has a result in a file
    told: str = ""             # what its output tells of a failure, as a regular expression
    counters: tuple = ()       # counter files, which may hold some of the counts
    manifests: tuple = ()      # lists of catalogs, which may tell what is not finished
    lines: tuple = ()          # files to which lines are delivered, which may hold some of them
    states: tuple = ()         # what tells how far lines are delivered or read
    hands_over: bool = False   # the next run goes on where it ended: what it printed is not printed again
    waits: bool = False        # for a receiver that is away, for ever: nothing fails for good in it

    def command(self, tools):
        return [str(tools.program(self.executable) if self.executable else tools.qzlog), *self.arguments]

    def asking(self):
        """The program also says what it gets from ICU without the library."""
        return dataclasses.replace(self, arguments=(*self.arguments, "ask"))

    def tree(self, material):
        """The folder before a run."""
        def is_wanted(path):
            return any(path == name or path.startswith(name + "/") or name.startswith(path + "/") for name in self.files)
        return {"tmp": folders.FOLDER, **{path: content for path, content in material.items() if is_wanted(path)}}


def command(name, line, files="", **more):
    return Scenario(name, tuple(line.split()), tuple(files.split()), **more)


HERE = "file:///proc/self/cwd/"  # each run has a folder of its own; states name the receiver
BOTH = "storage.yaml storage_aux.yaml"

def shipping(name, options, files):
    folder = "got" if "ship.json" in files else "new"
    return command(name, f"ship {options} --to {HERE}{folder} --state ship.json --once", files,
                   lines=(f"{folder}/entries.jsonl", "dead.jsonl"), states=("ship.json",), waits=True)


def reading(name, line, files):
    """Of a receiver, with all to oneself and as one of a group."""
    group = "got/entries.jsonl.group-readers"
    return [command(name, line, files),
            command(f"{name}-group", f"{line} --group readers", files, states=(group,), hands_over=True, waits=True)]


RECEIVERS = [
    shipping("ship", "log/storage", "log new"),
    shipping("ship-on", "log/storage", "log got ship.json"),
    shipping("ship-refused", "odd/storage --option refuse=3 --dead-letters dead.jsonl --metrics metrics.json", "odd new"),
    shipping("ship-chosen", "odd/storage --definitions storage.yaml --where Free>=1000 --dead-letters dead.jsonl",
             "odd new storage.yaml"),
    *reading("render-receiver", f"render --definitions storage.ldf --locale en_US --from {HERE}got", "storage.ldf got/entries.jsonl"),
    command("count-collect", f"count collect --definitions storage.ldf --from {HERE}got --group readers --batches batches",
            "storage.ldf got/entries.jsonl batches", states=("got/entries.jsonl.group-readers",), waits=True),
]

COMMANDS = [
    command("compile", "compile storage.yaml -o old/storage.ldf", "storage.yaml old/storage.ldf", writes=True),
    command("compile-new", "compile storage.yaml -o new.ldf --depfile new.d", "storage.yaml", writes=True),
    command("compile-stdout", "compile - -o -", "storage.yaml", input="storage.yaml"),
    command("compile-aux", "compile storage_aux.yaml --aux-of storage.ldf -o aux.ldf", "storage_aux.yaml storage.ldf",
            writes=True),
    command("compile-merge", "compile storage.yaml --merge storage_aux.yaml -o old/storage.ldf --emit-json=all.json",
            BOTH + " old/storage.ldf", writes=True),
    command("compile-errors", "compile broken.yaml -o storage.ldf", "broken.yaml storage.ldf"),
    command("inspect", "inspect storage.ldf", "storage.ldf"),
    command("inspect-yaml", "inspect storage.ldf --yaml", "storage.ldf"),
    command("inspect-json", "inspect - --json", "storage.ldf", input="storage.ldf"),
    command("check", "check storage.yaml storage_aux.yaml", BOTH, told=": error: "),
    command("check-catalog", "check storage.ldf storage_aux.ldf --catalog messages", "storage.ldf storage_aux.ldf messages",
            told=": error: "),
    command("explain", "explain VOLUME_ALMOST_FULL --definitions storage.yaml --aux storage_aux.yaml --catalog messages",
            BOTH + " messages", told=r"\(no message: "),
    command("diff", "diff old.yaml storage.yaml", "old.yaml storage.yaml"),
    command("diff-json", "diff storage.ldf old.yaml --json", "old.yaml storage.ldf"),
    command("diff-git", "diff git:HEAD:old.yaml storage.yaml", "old.yaml storage.yaml .git"),
    command("render", "render --definitions storage.ldf --aux storage_aux.ldf --locale en_US entries.jsonl",
            "storage.ldf storage_aux.ldf entries.jsonl"),
    command("render-narrow", "render --definitions storage.yaml --no-icu", "storage.yaml entries.jsonl", input="entries.jsonl"),
    command("render-catalog", "render --definitions storage.ldf --aux storage_aux.ldf --catalog messages --locale de_DE --code-page"
            " ISO-8859-1 entries.jsonl", "storage.ldf storage_aux.ldf messages entries.jsonl"),
    command("render-config", "render --definitions storage.ldf --locale en_US --config log.conf --section storage entries.jsonl",
            "storage.ldf log.conf entries.jsonl"),
    command("render-count", "render --definitions storage.ldf --locale en_US --count events entries.jsonl",
            "storage.ldf entries.jsonl events.cnt", writes=True, counters=("events.cnt",)),
    command("render-log", "render --definitions storage.ldf --aux storage_aux.ldf --locale en_US --check-gaps log entries.jsonl",
            "storage.ldf storage_aux.ldf log entries.jsonl"),
    command("render-series", "render --definitions storage.ldf --aux storage_aux.ldf --locale en_US log/storage",
            "storage.ldf storage_aux.ldf log"),
    command("render-errors", "render --definitions storage.ldf --locale en_US bad.jsonl", "storage.ldf bad.jsonl"),
    command("render-chosen", "render --definitions storage.ldf --aux storage_aux.ldf --locale en_US --utc --output short --since"
            " 2026-11-21T06:00:00Z --where not(Free>=1000) entries.jsonl",
            "storage.ldf storage_aux.ldf entries.jsonl"),
    command("render-table", "render --definitions storage.ldf --aux storage_aux.ldf --locale de-DE --time-zone Europe/Berlin"
            " --time-style locale --output table entries.jsonl", "storage.ldf storage_aux.ldf entries.jsonl"),
    command("render-csv", "render --definitions storage.ldf --locale en_US --utc --output csv --level 3..9 -",
            "storage.ldf entries.jsonl", input="entries.jsonl"),
    command("render-tail", "render --definitions storage.ldf --aux storage_aux.ldf --locale en_US --output json --tail 3"
            " entries.jsonl", "storage.ldf storage_aux.ldf entries.jsonl"),
    command("render-by-time", "render --definitions storage.ldf --aux storage_aux.ldf --locale en_US --utc --output long --unique"
            " --merge-by-time log entries.jsonl", "storage.ldf storage_aux.ldf log entries.jsonl"),
    command("render-definitions", "render --definitions old/storage.ldf --aux storage_aux.ldf --definitions storage.ldf"
            " --aux storage_aux.ldf --locale en_US log entries.jsonl", "old/storage.ldf storage.ldf storage_aux.ldf log entries.jsonl"),
    command("stats", "stats --definitions storage.ldf --by Volume --of Free --utc log entries.jsonl",
            "storage.ldf log entries.jsonl"),
    command("stats-json", "stats --definitions storage.ldf --aux storage_aux.ldf --by hour --level 2..9 --time-zone Europe/Berlin"
            " --json entries.jsonl", "storage.ldf storage_aux.ldf entries.jsonl"),
    command("render-syslog", "render --definitions storage.ldf --from syslog syslog.log", "storage.ldf syslog.log"),
    command("count-merge", "count merge counts --counter events", "events.cnt counts", writes=True),
    command("count-fold", "count merge counts --counter new --fold", "counts", writes=True),
    command("count-show", "count show events.cnt --definitions storage.yaml", "events.cnt storage.yaml"),
    command("count-show-json", "count show - --json", "events.cnt", input="events.cnt"),
    command("count-add", "count add events --date 2026-11-21 --key 1001", "events.cnt", writes=True, counters=("events.cnt",)),
    command("count-add-new", "count add new --date 2026-11-21 --key 1001", "", writes=True, counters=("new.cnt",)),
    command("count-set", "count set events --date 2026-11-22 --key VOLUME_MOUNTED --count 12 --definitions storage.yaml",
            "events.cnt storage.yaml", writes=True, counters=("events.cnt",)),
    command("count-delete", "count delete events --date 2026-11-21 --key 1001", "events.cnt", writes=True,
            counters=("events.cnt",)),
    command("count-delete-box", "count delete events --from 2026-11-01 --to 2026-11-21", "events.cnt", writes=True,
            counters=("events.cnt",)),
    command("catalog-extract", "catalog extract storage.yaml storage_aux.yaml -o po/storage.pot --update po/de.po po/ja.po"
            " po/fr.po", BOTH + " po", writes=True),
    command("catalog-build", "catalog build storage.yaml storage_aux.yaml --po po -o messages", BOTH + " po",
            writes=True, manifests=("messages/qzlog-catalog.json",)),
    command("catalog-rebuild", "catalog build storage.yaml storage_aux.yaml --po po -o old/messages", BOTH + " po old/messages",
            writes=True, manifests=("old/messages/qzlog-catalog.json",)),
    command("catalog-journal", "catalog journal storage.yaml storage_aux.yaml --po po --product storage -o journal", BOTH + " po",
            writes=True),
    command("catalog-status", "catalog status storage.yaml storage_aux.yaml --po po --json", BOTH + " po"),
    *RECEIVERS,
    Scenario("manual-pages", ("docs", str(DOCS)), program=MANUALS, executable=MANUALS, writes=True),
    command("help", "--help"),
    command("usage", "compile --no-such-option"),
]

# In these another program works for the command, and something fails there.
CHILDREN = [
    command("catalog-build/genrb", "catalog build storage.yaml --po po -o messages", "storage.yaml po", program="genrb",
            writes=True, manifests=("messages/qzlog-catalog.json",)),
    command("diff-git/git", "diff git:HEAD:old.yaml storage.yaml", "old.yaml storage.yaml .git", program="git"),
]


def program(name, files):
    """Twice: before anything was used in the process, and after all of it was."""
    return [Scenario(f"{name}{state}", (name, state[1:]), tuple(files.split()), program=PROGRAM, marked=True, executable=PROGRAM)
            for state in (COLD, WARM)]


PROGRAMS = [
    *program("entries", "storage.ldf storage_aux.ldf"),
    *program("narrow", "storage.ldf storage_aux.ldf"),
    *program("icu", "storage.ldf storage_aux.ldf"),
    *program("buffers", "storage.ldf"),
    *program("catalog", "storage.ldf storage_aux.ldf messages"),
    *program("code-pages", ""),
    *program("configuration", "log.conf"),
    *program("filter", "storage.ldf log.conf"),
    *program("debug-log", "storage.ldf"),
    *program("counter", "events.cnt"),
    *program("counter-new", ""),
]

RECORD = struct.Struct(">8i")


def in_between(scenario):
    """The files that may hold some of a scenario's changes, and what then says whether they do."""
    return {**{name: is_partly_counted for name in scenario.counters}, **{name: is_unfinished for name in scenario.manifests},
            **{name: is_partly_delivered for name in scenario.lines}, **{name: is_state for name in scenario.states}}


def is_partly_delivered(before, after, now):
    """Lines that were there, and whole ones of those that come."""
    old, new, found = ((content or b"").splitlines(keepends=True) for content in (before, after, now))
    return found[:len(old)] == old and set(found) <= set(new)


def is_state(_before, _after, now):
    """One that the next run goes on from, which is then tried."""
    return bool(now)


def is_unfinished(before, after, now):
    """A list of a catalog that says what it had, and what a build was about to make."""
    try:
        found, old, new = (json.loads(content or b"null") for content in (now, before, after))
    except ValueError:
        return False
    if not isinstance(found, dict):
        return False
    made = found.pop("unfinished", None)
    known = old if old is not None else {**new, "bundles": {}}
    return bool(made) and found == known and made.items() <= new["bundles"].items()


def counts_of(content):
    """The count of each day and key, or None where the file is damaged."""
    counts = {}
    for start in range(0, len(content or b""), RECORD.size):
        record = content[start:start + RECORD.size]
        if len(record) != RECORD.size:
            return None
        size, year, month, day, key, count, _, _ = RECORD.unpack(record)
        if size != RECORD.size or (year, month, day, key) in counts:
            return None
        if (year, month, day) != (0, 0, 0):
            counts[year, month, day, key] = count
    return counts


def is_partly_counted(before, after, now):
    """Every count lies between what it was and what it becomes."""
    old, new, found = counts_of(before), counts_of(after), counts_of(now)
    if found is None:
        return False
    def is_between(key):
        limits = old.get(key, 0), new.get(key, 0)
        return min(limits) <= found.get(key, 0) <= max(limits)
    return all(is_between(key) for key in {*old, *new, *found})
