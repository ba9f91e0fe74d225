"""Allocations that fail: the n-th, or all from the n-th on, in every scenario, ICU's and the C library's too."""
import dataclasses

import icu_excuses
import judge
import next_run
import runners
import scenarios

ONCE, FROM_THEN_ON = "once", "from then on"
SHORT_POINTS = 16


@dataclasses.dataclass(frozen=True)
class Work:
    """Points of one row of the table."""
    scenario: scenarios.Scenario
    what: str
    points: tuple

    def run(self, worker):
        runner = TracedMemory(worker, self.scenario) if is_child(self.scenario) else ServedMemory(worker, self.scenario)
        with runner:
            for nth in self.points:
                yield nth, runner.verdict(nth, self.what == FROM_THEN_ON), ""


def plan(worker, scenario):
    """How many allocations there are."""
    runner = TracedMemory(worker, scenario) if is_child(scenario) else ServedMemory(worker, scenario)
    with runner:
        return runner.good.points


def works(scenario, allocations, short, at):
    for what in (ONCE,) if scenario.waits else (ONCE, FROM_THEN_ON):
        points = (at,) if at else tuple(sample(allocations, SHORT_POINTS if short else allocations))
        yield from (Work(scenario, what, chunk) for chunk in chunks(points, 500))


def sample(count, most):
    """At most `most` of the numbers from 1 to `count`, evenly spread, the last among them."""
    most = min(count, most)
    return [count - (count * index) // most for index in reversed(range(most))]


def chunks(points, size):
    return [points[start:start + size] for start in range(0, len(points), size)]


def is_child(scenario):
    """Whether something fails in a program that the scenario's own one starts."""
    return scenario.program != (scenario.executable or "qzlog")


def judge_run(scenario, run, good, before):
    if scenario.marked:
        return judge.judge_program(run, good)
    return judge.judge_command(run, good, before, scenarios.in_between(scenario), scenario.told)


class ServedMemory:
    """A fork for each run; one that crashes, hangs or is not right any more is run again under fault_run, which shows where, and
    with the questions to ICU, whose fault it may be."""

    def __init__(self, worker, scenario):
        self.place, self.scenario, self.tree = worker.place, scenario, worker.tree(scenario)
        self.server = runners.ForkServer(self.place, scenario)
        self.good = judge.checked(self.server.run(self.tree, 0, False), scenario.marked)
        self.good_answers = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.close()

    def verdict(self, nth, from_then_on):
        run = self.server.run(self.tree, nth, from_then_on)
        found = judge_run(self.scenario, run, self.good, self.tree)
        fault = f"{nth}{'+' if from_then_on else ''}"
        if found.outcome in (judge.CRASH, judge.HANG):
            run = self.run_traced(self.scenario, fault)
            found = judge_run(self.scenario, run, self.good, self.tree)
            return icu_excuses.excuse_ending(found, run.frames)
        if found.outcome == judge.WRONG and self.scenario.marked:
            return self.verdict_of_asked(fault)
        return next_run.judge_finished(self.scenario, found, run, self.good, self.tree, lambda tree: self.server.run(tree, 0, False))

    def verdict_of_asked(self, fault):
        asking = self.scenario.asking()
        if self.good_answers is None:
            self.good_answers = self.run_traced(asking, "0")
        return icu_excuses.judge_asked(self.run_traced(asking, fault), self.good_answers)

    def run_traced(self, scenario, fault):
        return runners.run_traced(self.place, scenario, self.tree, environment={"QZ_FAULT_MEMORY": fault})


class TracedMemory:
    """For programs that a command starts: the n-th allocation of all that it starts."""

    def __init__(self, worker, scenario):
        self.place, self.scenario, self.tree = worker.place, scenario, worker.tree(scenario)
        self.count = self.place.folder / "count"
        self.good = judge.checked(self.run("0", self.tree), scenario.marked)
        self.good.points = int.from_bytes(self.count.read_bytes()[:8], "little")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        pass

    def run(self, fault, tree):
        self.count.unlink(missing_ok=True)
        return runners.run_traced(self.place, self.scenario, tree,
                                  environment={"QZ_FAULT_MEMORY": fault, "QZ_FAULT_COUNT": str(self.count)})

    def verdict(self, nth, from_then_on):
        run = self.run(f"{nth}{'+' if from_then_on else ''}", self.tree)
        found = judge_run(self.scenario, run, self.good, self.tree)
        return next_run.judge_finished(self.scenario, found, run, self.good, self.tree, lambda tree: self.run("0", tree))
