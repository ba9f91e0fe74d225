"""Spreads the work over processes, two by default; each has a folder of its own."""
import importlib
import multiprocessing
import os
import signal

import material
import runners


class Worker:
    """What one process works with."""

    def __init__(self, tools, tree, folder):
        self.material = tree
        self.place = runners.Place(tools, os.path.join(folder, f"worker-{os.getpid()}"))
        self.trees = {}

    def tree(self, scenario):
        if scenario not in self.trees:
            self.trees[scenario] = material.placed(scenario.tree(self.material), self.place.run)
        return self.trees[scenario]


_worker = None


def _start(tools, material, folder):
    global _worker
    # A terminal interrupts all at once; the one that judges ends the others. What they start is as it always is.
    signal.signal(signal.SIGINT, lambda *_: None)
    _worker = Worker(tools, material, folder)


def _plan(argument):
    module, scenario = argument
    return importlib.import_module(module).plan(_worker, scenario)


def _run(work):
    return work.scenario.name, work.what, list(work.run(_worker))


class Pool:
    """Runs plans and works; a failure in one ends everything, for it is the harness's own."""

    def __init__(self, tools, material, folder, processes):
        self.pool = multiprocessing.get_context("fork").Pool(processes, _start, (tools, material, folder))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.pool.terminate()
        self.pool.join()

    def plan(self, subset, scenarios):
        return self.pool.map(_plan, [(subset.__name__, scenario) for scenario in scenarios], chunksize=1)

    def run(self, works):
        return self.pool.imap_unordered(_run, works)
