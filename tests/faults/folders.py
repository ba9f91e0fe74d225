"""The folder that a run works in: what it holds, and how it becomes again what it was."""
import json
import os
import pathlib
import re
import shutil

FOLDER = object()  # what a folder is in a tree


def read_tree(root):
    """Everything below `root`: a dictionary of relative path to bytes, ("link", target) or FOLDER."""
    tree = {}
    _read_into(tree, str(root), "")
    return tree


def _read_into(tree, folder, prefix):
    with os.scandir(folder) as entries:
        for entry in entries:
            name = prefix + entry.name
            if entry.is_symlink():
                tree[name] = ("link", os.readlink(entry.path))
            elif entry.is_dir():
                tree[name] = FOLDER
                _read_into(tree, entry.path, name + "/")
            else:
                with open(entry.path, "rb") as file:
                    tree[name] = file.read()


def steady(tree):
    """Without what is another one in each run, or may be missing: who has a lock, when something was, and lines that were sent
    again because nobody knew that they were there."""
    batches = {content for name, content in tree.items() if _is_batch(name)}
    tree = {name: content for name, content in tree.items() if not _is_batch(name)}
    tree.update({"batches/all.counts": b"".join(sorted(batches))} if batches else {})
    return {name: _steady_lines(name, content) if name in ("dead.jsonl", "got/entries.jsonl", "new/entries.jsonl") else content
            for name, content in tree.items() if not (name.endswith(".lock") or (name == "metrics.json" and _is_json(content)))}


def _is_batch(name):
    """What is named for the process that made it; the same counts in another one count once."""
    return name.startswith("batches/") and name.endswith(".counts")


def _steady_lines(name, content):
    """Each once, and twice what was there more often than sending again explains."""
    counts = {}
    if name == "dead.jsonl":
        content = re.sub(rb'"time":"[^"]*","identity"', b'"identity"', content)
    for line in content.splitlines(keepends=True):
        counts[line] = counts.get(line, 0) + 1
    return b"".join(line * (2 if count > 2 else 1) for line, count in counts.items())


def _is_json(content):
    try:
        return isinstance(json.loads(content), dict)
    except ValueError:
        return False


def write_tree(root, wanted, found=None):
    """Makes `root` hold the tree `wanted`; `found` is what it holds now, if that is known."""
    root = pathlib.Path(root)
    if found is None:
        found = read_tree(root)
    for name in sorted(set(found) - set(wanted), reverse=True):
        _remove(root / name, found[name])
    for name in sorted(wanted):
        if found.get(name) != wanted[name]:
            _remove(root / name, found.get(name))
            _make(root / name, wanted[name])


def _remove(path, content):
    if content is FOLDER:
        shutil.rmtree(path, ignore_errors=True)
    elif content is not None and path.parent.is_dir():
        path.unlink(missing_ok=True)


def _make(path, content):
    if content is FOLDER:
        path.mkdir()
    elif isinstance(content, tuple):
        path.symlink_to(content[1])
    else:
        path.write_bytes(content)
