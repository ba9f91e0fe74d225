"""The files that the scenarios start from, made once."""
import hashlib
import json
import os
import pathlib
import subprocess

import folders
import process_points
import stack_points
from scenarios import BOTH, HERE, RECORD

CONFIGURATION = """[global]
LogLevelLow = 1

[storage]
PropertyMask = 0x7
LogLevelLow = 3

"""

BROKEN = """version: "1.0"
entries:
  - {id: 1, name: ONE, message: "{Nothing}"}
  - {id: 1, name: two, message: "x"}
"""

COUNT_DAYS = 40
PLACE = "@folder@"  # of the run
# What stands where a template is put that no compiler would take.
FILLER = "~"


def counter_file():
    """Counts of three keys on each of forty days."""
    records = b""
    for day in range(COUNT_DAYS):
        for key in (1001, 1101, 2001):
            records += RECORD.pack(RECORD.size, 2026, 10 + day // 20, 1 + day % 20, key, day + 1, 0, 0)
    return records


def counts_batch(lines):
    """A batch as a collector writes it."""
    text = "qzlog counts 1\n" + lines
    return (text + f"checksum {hashlib.sha256(text.encode()).hexdigest()[:16]}\n").encode()


def shipped_state(offset, seq):
    """What a shipper has left that got so far in the first file of the log, in a folder that is not known yet."""
    return ('{\n  "qzlog_ship": 1,\n  "to": "%sgot",\n  "places": [\n    {"series": "%s/log/storage", '
            '"file": "storage.20261121.0001", "offset": %d, "identity": "host/1/1/%d"}\n  ],\n'
            % (HERE, PLACE, offset, seq)).encode()


def placed(tree, folder):
    """The tree for a run in a folder, which the state of a shipper tells."""
    if "ship.json" not in tree:
        return tree
    state = tree["ship.json"].replace(PLACE.encode(), os.path.realpath(folder).encode())
    checksum = hashlib.sha256(state).hexdigest()[:16]
    return {**tree, "ship.json": state + b'  "checksum": "%s"\n}\n' % checksum.encode()}


def make_material(tools, examples, folder):
    """Everything that the scenarios start from, as a tree."""
    folder = pathlib.Path(folder)
    folder.mkdir(exist_ok=True)
    storage = pathlib.Path(examples) / "storage"
    tree = {name: (storage / name).read_bytes() for name in (*BOTH.split(), "storage.jsonl")}
    tree["entries.jsonl"] = tree.pop("storage.jsonl")
    tree["bad.jsonl"] = tree["entries.jsonl"][:600] + b"\n{\"id\": 99999}\nno entry\n"
    # A log of a writer that misses a line, in two files.
    lines = [b'{"writer":"host/1/1","seq":%d,' % seq + line[1:] + b"\n"
             for seq, line in enumerate(tree["entries.jsonl"].splitlines(), 1) if seq != 2]
    tree["log"] = folders.FOLDER
    tree["log/storage.20261121.0001"], tree["log/storage.20261121.0002"] = b"".join(lines[:2]), b"".join(lines[2:])
    # One with a line that nobody takes; and receivers, of which one has the first lines of the other log.
    tree["odd"] = tree["new"] = tree["got"] = tree["batches"] = folders.FOLDER
    tree["odd/storage.20261121.0001"] = b"".join(lines) + b"no entry\n"
    tree["got/entries.jsonl"] = b"".join(lines[:2])
    tree["ship.json"] = shipped_state(len(b"".join(lines[:2])), json.loads(lines[1])["seq"])
    tree["old.yaml"] = tree["storage.yaml"].replace(b"projects", b"things").replace(b" is ", b" has become ")
    tree["many.yaml"] = process_points.definition_source().encode()
    tree["broken.yaml"], tree["log.conf"] = BROKEN.encode(), CONFIGURATION.encode()
    tree["po"] = tree["old"] = tree["old/po"] = folders.FOLDER
    for path in storage.glob("po/*.po"):
        tree[f"po/{path.name}"] = path.read_bytes()
    # A catalog as it was: one language in other words, one that is not there any more, one that was not there yet.
    tree["old/po/de.po"] = tree["po/de.po"]
    tree["old/po/it.po"] = tree["po/ja.po"].replace(b"Language: ja", b"Language: it")
    tree["po/de.po"] = tree["po/de.po"].replace(b'"Volume', b'"The volume', 1)
    tree["events.cnt"] = counter_file()
    tree["counts"] = folders.FOLDER
    tree["counts/a.counts"] = counts_batch("lines 2026-11-21 1001 h/1/2 1-500\n")
    tree["counts/b.counts"] = counts_batch("lines 2026-11-21 1001 h/1/2 490-510\nlines 2026-11-22 1101 h/1/3 1,3\n")
    tree["counts/folded.counts"] = counts_batch("count 2026-11-20 1001 7\nfolded h/1/1 1-7\n")
    tree["syslog.log"] = b"".join(
        b'<131>1 2026-11-21T08:15:30Z h storage 1 E [qzlog@32473 entry="' +
        line.replace(b"\\", b"\\\\").replace(b'"', b'\\"').replace(b"]", b"\\]") + b'"] text\n'
        for line in tree["entries.jsonl"].splitlines())
    folders.write_tree(folder, tree)
    _make_results(tools, folder)
    for name, template in stack_points.templates().items():
        _make_definitions(tools, folder, name, template)
    return folders.read_tree(folder)


def _run(folder, *line):
    ended = subprocess.run([str(word) for word in line], cwd=folder, check=False, capture_output=True, text=True,
                           env={**os.environ, "HOME": str(folder), "GIT_CONFIG_NOSYSTEM": "1"})
    if ended.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, line))}: {ended.stderr}")


def _make_results(tools, folder):
    def run(*line):
        _run(folder, *line)

    run(tools.qzlog, "compile", "storage.yaml", "-o", "storage.ldf")
    run(tools.qzlog, "compile", "many.yaml", "-o", "many.ldf")
    run(tools.qzlog, "compile", "old.yaml", "-o", "old/storage.ldf")
    run(tools.qzlog, "compile", "storage_aux.yaml", "--aux-of", "storage.yaml", "-o", "storage_aux.ldf")
    run(tools.qzlog, "catalog", "build", *BOTH.split(), "--po", "po", "-o", "messages")
    run(tools.qzlog, "catalog", "build", *BOTH.split(), "--po", "old/po", "-o", "old/messages")
    run("git", "init", "--quiet")
    run("git", "add", "old.yaml")
    run("git", "-c", "user.name=Test", "-c", "user.email=test@example.com", "-c", "commit.gpgsign=false", "commit", "--quiet",
        "--message=First")


def _make_definitions(tools, folder, name, template):
    """A definition file as somebody else's compiler might write it: the template takes the place of a filler."""
    filler = FILLER * len(template)
    source = (f'version: "1.0"\nentries:\n  - {{id: 1, name: ONE, raw: "{filler} %d%Count%", '
              'attributes: [{name: Count, type: SInt4}]}\n')
    (folder / "filler.yaml").write_text(source, encoding="ascii")
    _run(folder, tools.qzlog, "compile", "filler.yaml", "-o", name, "--path", "icu")
    content = (folder / name).read_bytes()
    if filler.encode() not in content:
        raise RuntimeError(f"{name} does not hold its template as it stands")
    (folder / name).write_bytes(content.replace(filler.encode(), template.encode()))
