"""Commands that are started with standard descriptors closed, in every combination."""
import dataclasses
import itertools

import judge
import runners
import scenarios

SUBSETS = tuple("".join(chosen) for count in (1, 2, 3) for chosen in itertools.combinations("012", count))


@dataclasses.dataclass(frozen=True)
class Work:
    scenario: scenarios.Scenario
    what: str
    points: tuple

    def run(self, worker):
        tree = worker.tree(self.scenario)
        good = judge.checked(runners.run_traced(worker.place, self.scenario, tree), is_program=False)
        # A closed standard input has nothing in it.
        empty = runners.run_traced(worker.place, dataclasses.replace(self.scenario, input=""), tree)
        for closed in self.points:
            run = runners.run_traced(worker.place, self.scenario, tree, closed=closed)
            yield closed, judge_run(self.scenario, run, empty if "0" in closed else good, tree, closed), ""


def plan(_worker, _scenario):
    return SUBSETS


def works(scenario, subsets, short, at):
    if at:
        subsets = [f"{at:03}"] if f"{at:03}" in subsets else [str(at)]
    elif short:
        subsets = ("0", "1", "12", "012")
    yield Work(scenario, "closed", tuple(subsets))


def judge_run(scenario, run, good, before, closed):
    """What nobody can see is as it should be."""
    seen = dataclasses.replace(run, out=good.out) if "1" in closed else run
    return judge.judge_command(seen, good, before, scenarios.in_between(scenario), scenario.told, errors_are_lost="2" in closed)
