"""The folder that a run works in: what it holds, and how it becomes again what it was."""
import os
import pathlib
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
