"""Processes that fork, end and are killed: programs that do so themselves, and commands that are killed at some moment."""
import dataclasses
import subprocess
import time

import judge
import runners
import scenarios

KILLS, SHORT_KILLS = 100, 8


@dataclasses.dataclass(frozen=True)
class Stress:
    """A case of scenarios/process_stress.cpp."""
    name: str
    rounds: int
    short_rounds: int

    def scenario(self, rounds):
        return scenarios.Scenario(self.name, (self.name, str(rounds)), ("many.ldf",), program="process_stress",
                                  executable="process_stress")


STRESSES = [Stress("fork", 200, 5), Stress("fork-narrow", 200, 5), Stress("fork-threads", 1000, 100),
            Stress("fork-threads-narrow", 1000, 100), Stress("exit-threads", 3000, 150),
            Stress("exit-threads-narrow", 3000, 150), Stress("end-threads", 500, 30)]

# What a command was killed in the middle of must not keep the next one from its work.
KILLED = [scenario for scenario in scenarios.COMMANDS if scenario.writes]
SCENARIOS = STRESSES + KILLED


@dataclasses.dataclass(frozen=True)
class StressWork:
    scenario: Stress
    what: str
    points: tuple

    def run(self, worker):
        scenario = self.scenario.scenario(self.points[0])
        place = worker.place
        place.prepare(worker.tree(scenario))
        ended = subprocess.run(scenario.command(place.tools), cwd=place.run, check=False, capture_output=True)
        verdict = judge.Verdict(judge.AS_BEFORE)
        if ended.returncode != 0:
            outcome = judge.HANG if b"hung" in ended.stderr else judge.CRASH if b"signal" in ended.stderr else judge.WRONG
            verdict = judge.Verdict(outcome, ", ".join(ended.stderr.decode().splitlines()) or f"status {ended.returncode}")
        yield f"one of {self.points[0]} rounds", verdict, ""


@dataclasses.dataclass(frozen=True)
class KillWork:
    scenario: scenarios.Scenario
    what: str
    points: tuple

    def run(self, worker):
        tree = worker.tree(self.scenario)
        started = time.monotonic()
        good = run_plainly(worker.place, self.scenario, tree)
        duration = time.monotonic() - started
        for point in self.points:
            run = run_plainly(worker.place, self.scenario, tree, kill_after=duration * point)
            found = judge_killed(self.scenario, run, good, tree) or self.judge_next(worker, run, good)
            yield f"{point:.2f} of its time", found, ""

    # It starts from what the killed one left.
    def judge_next(self, worker, killed, good):
        run = run_plainly(worker.place, self.scenario, killed.tree)
        if run.number != good.number or run.kind != "exit":
            return judge.Verdict(judge.WRONG, f"the next one ended with {run.kind} {run.number}: {judge.last_line(run.err)}")
        if not self.scenario.counters and any(run.tree.get(name) != good.tree[name] for name in good.tree if "tmp/" not in name):
            return judge.Verdict(judge.WRONG, "the next one did not write what it should")
        return judge.Verdict(judge.AS_BEFORE)


def plan(_worker, _scenario):
    return None


def works(scenario, _plan, short, _at):
    if isinstance(scenario, Stress):
        yield StressWork(scenario, "forks and ends", (scenario.short_rounds if short else scenario.rounds,))
        return
    kills = SHORT_KILLS if short else KILLS
    points = [1.1 * index / kills for index in range(kills)]
    yield from (KillWork(scenario, "kill -9", tuple(points[start:start + 25])) for start in range(0, kills, 25))


def run_plainly(place, scenario, tree, kill_after=None):
    place.prepare(tree)
    with open(place.input(scenario), "rb") as given, open(place.out, "wb") as out, open(place.err, "wb") as err:
        process = subprocess.Popen(scenario.command(place.tools), cwd=place.run, stdin=given, stdout=out, stderr=err,
                                   env=place.environment(scenario, LD_PRELOAD=""), start_new_session=True)
        try:
            process.wait(kill_after if kill_after is not None else runners.TIMEOUT_MS / 1000)
        except subprocess.TimeoutExpired:
            kill_group(process)
            return place.result(kind="hang" if kill_after is None else "signal", number=9)
    return place.result(kind="exit", number=process.returncode)


# With what it has started: otherwise that would go on writing beside the next one.
def kill_group(process):
    subprocess.run(["kill", "-KILL", "--", f"-{process.pid}"], check=False, stderr=subprocess.DEVNULL)
    process.wait()


def judge_killed(scenario, run, good, before):
    """None when each file is as it was or as it becomes; what was temporary may stay."""
    known = {**before, **good.tree}
    files = {name: content for name, content in run.tree.items() if name in known}
    ended = dataclasses.replace(run, kind="exit", number=1, tree=files, err=b"killed")
    verdict = judge.judge_command(ended, good, before, scenarios.in_between(scenario))
    return verdict if verdict.outcome in judge.BAD else None


def definition_source():
    """More events than the library keeps in memory."""
    entries = (f"  - {{id: {number}, name: EVENT_{number}, message: \"Event {number} has happened {{Count}} times\", "
               "attributes: [{name: Count, type: SInt4}]}\n" for number in range(1, 401))
    return "version: \"1.0\"\nentries:\n" + "".join(entries)
