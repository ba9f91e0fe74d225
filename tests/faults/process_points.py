"""Processes that fork, end and are killed: programs that do so themselves, and commands that are killed at some moment or may not
write as much as they want."""
import contextlib
import dataclasses
import os
import resource
import signal
import subprocess
import time

import judge
import next_run
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
            Stress("fork-threads-narrow", 1000, 100), Stress("fork-threads-debug", 200, 20), Stress("exit-threads", 3000, 150),
            Stress("exit-threads-narrow", 3000, 150), Stress("end-threads", 500, 30)]

# What a command was killed in the middle of must not keep the next one from its work.
SIGNALS = {"kill -9": signal.SIGKILL, "SIGTERM": signal.SIGTERM}
FILE_SIZES = (0, 500, 2000, 4500)  # in bytes
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
        place.forget()
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
        good = judge.checked(run_plainly(worker.place, self.scenario, tree), is_program=False)
        duration = time.monotonic() - started
        for point in self.points:
            run = run_plainly(worker.place, self.scenario, tree, duration * point, SIGNALS[self.what])
            found = judge_killed(self.scenario, run, good, tree, SIGNALS[self.what])
            yield f"{point:.2f} of its time", found or self.judge_next(worker, run, good), ""

    def judge_next(self, worker, killed, good):
        run = run_plainly(worker.place, self.scenario, killed.tree)
        return next_run.judge_next(self.scenario, run, good, worker.tree(self.scenario)) or judge.Verdict(judge.AS_BEFORE)


@dataclasses.dataclass(frozen=True)
class LimitWork:
    """Files may not grow beyond a size, of which the kernel tells by a signal and by an error."""
    scenario: scenarios.Scenario
    what: str
    points: tuple

    def run(self, worker):
        tree = worker.tree(self.scenario)
        good = judge.checked(run_plainly(worker.place, self.scenario, tree), is_program=False)
        for size in self.points:
            run = run_plainly(worker.place, self.scenario, tree, largest_file=size)
            if run.number == -signal.SIGXFSZ:
                yield size, judge_killed(self.scenario, run, good, tree, signal.SIGXFSZ) or judge.Verdict(judge.ERROR), ""
            else:
                allowed = scenarios.in_between(self.scenario)
                found = judge.judge_command(run, good, tree, allowed, errors_are_lost=size == 0)
                yield size, next_run.judge_finished(self.scenario, found, run, good, tree,
                                                    lambda left: run_plainly(worker.place, self.scenario, left)), ""


def plan(_worker, _scenario):
    return None


def works(scenario, _plan, short, _at):
    if isinstance(scenario, Stress):
        yield StressWork(scenario, "forks and ends", (scenario.short_rounds if short else scenario.rounds,))
        return
    kills = SHORT_KILLS if short else KILLS
    points = [1.1 * index / kills for index in range(kills)]
    for name in SIGNALS:
        yield from (KillWork(scenario, name, tuple(points[start:start + 25])) for start in range(0, kills, 25))
    yield LimitWork(scenario, "file size", FILE_SIZES)


def run_plainly(place, scenario, tree, kill_after=None, by=signal.SIGKILL, largest_file=None):
    def limit():
        if largest_file is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (largest_file, largest_file))

    place.prepare(tree)
    with open(place.input(scenario), "rb") as given, open(place.out, "wb") as out, open(place.err, "wb") as err:
        process = subprocess.Popen(scenario.command(place.tools), cwd=place.run, stdin=given, stdout=out, stderr=err,
                                   env=place.environment(scenario, LD_PRELOAD=""), start_new_session=True, preexec_fn=limit)
        return wait_or_kill(place, process, kill_after, by)


def wait_or_kill(place, process, kill_after, by):
    kind = "exit"
    try:
        process.wait(kill_after if kill_after is not None else runners.TIMEOUT_MS / 1000)
    except subprocess.TimeoutExpired:
        kind = "hang" if kill_after is None else "signal"
        process.send_signal(by)
        if by != signal.SIGKILL:
            kind = wait_for_end(process) or kind
    kill_group(process)
    run = place.result(kind=kind, number=process.returncode)
    if kind != "exit":
        place.forget()
    return run


def wait_for_end(process):
    try:
        process.wait(runners.TIMEOUT_MS / 1000)
    except subprocess.TimeoutExpired:
        return "hang"
    return None


# With what it has started: otherwise that would go on writing beside the next one.
def kill_group(process):
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)
    process.wait()


def judge_killed(scenario, run, good, before, by):
    """None when each file is as it was or as it becomes. Only who is killed without a word may leave what was temporary."""
    known = {**before, **good.tree}
    tree = {name: content for name, content in run.tree.items() if name in known or by != signal.SIGKILL}
    ended = run if run.kind == "hang" else dataclasses.replace(run, kind="exit", number=1, tree=tree, err=b"killed")
    verdict = judge.judge_command(ended, good, before, scenarios.in_between(scenario))
    return verdict if verdict.outcome in judge.BAD else None


def definition_source():
    """More events than the library keeps in memory."""
    entries = (f"  - {{id: {number}, name: EVENT_{number}, message: \"Event {number} has happened {{Count}} times\", "
               "attributes: [{name: Count, type: SInt4}]}\n" for number in range(1, 401))
    return "version: \"1.0\"\nentries:\n" + "".join(entries)
