"""System calls that fail or transfer a part: each that a scenario makes, with each error that it may have."""
import dataclasses

import judge
import memory_points
import next_run
import runners
import scenarios

SHORT_POINTS = 10
# A "+" behind an error: it lasts.
ERRORS = {
    "open": ("EIO", "ENOSPC", "EINTR", "EMFILE", "EMFILE+"),
    "read": ("EIO", "EINTR", "short", "short+"),
    "write": ("EIO", "ENOSPC", "ENOSPC+", "EINTR", "short", "short+"),
    "fsync": ("EIO", "ENOSPC", "EINTR"),
    "close": ("EIO", "ENOSPC", "EINTR"),
    "lseek": ("EIO",),
    "ftruncate": ("EIO", "EINTR"),
    "stat": ("EIO",),
    "access": ("EIO",),
    "rename": ("EIO", "ENOSPC"),
    "unlink": ("EIO",),
    "mkdir": ("EIO", "ENOSPC"),
    "link": ("EIO", "ENOSPC"),
    "chmod": ("EIO",),
    "getdents": ("EIO",),
    "lock": ("EIO", "EINTR"),
    "memfd": ("EMFILE",),
    "mmap": ("ENOMEM",),
    "pipe": ("EMFILE",),
    "dup": ("EMFILE", "EINTR"),
    "fork": ("EAGAIN",),
    "exec": ("EIO", "EMFILE"),
    "wait": ("EINTR",),
}
ALL = ",".join(ERRORS)

# Whoever makes one of these of what he writes has to say that it failed.
RESULT_CALLS = ("write", "fsync", "close", "ftruncate", "rename")


@dataclasses.dataclass(frozen=True)
class Work:
    """Points of one row of the table: pairs of the call's number and the error."""
    scenario: scenarios.Scenario
    what: str
    points: tuple

    def run(self, worker):
        tree = worker.tree(self.scenario)
        good = judge.checked(runners.run_traced(worker.place, self.scenario, tree), self.scenario.marked)
        for nth, error in self.points:
            run = runners.run_traced(worker.place, self.scenario, tree, ALL, nth, error.rstrip("+"), error.endswith("+"))
            found = judge_run(self.scenario, run, good, tree, error)
            yield f"{nth} {error}", next_run.judge_finished(
                self.scenario, found, run, good, tree, lambda left: runners.run_traced(worker.place, self.scenario, left)), run.hit


def plan(worker, scenario):
    """The calls that it makes."""
    return runners.run_traced(worker.place, scenario, worker.tree(scenario), ALL).sequence


def works(scenario, sequence, short, at):
    points = [(nth, error) for nth, call in enumerate(sequence, 1) for error in ERRORS[call.split(" ")[0]]
              if at in (0, nth) and not (scenario.waits and error.endswith("+"))]
    if short and not at:
        points = [points[index - 1] for index in memory_points.sample(len(points), SHORT_POINTS)] if points else []
    by_call = {}
    for nth, error in points:
        by_call.setdefault(sequence[nth - 1].split(" ")[0], []).append((nth, error))
    for call, chosen in sorted(by_call.items()):
        yield from (Work(scenario, call, chunk) for chunk in memory_points.chunks(tuple(chosen), 100))


def judge_run(scenario, run, good, before, error):
    if scenario.marked:
        return judge.judge_program(run, good)
    call, _, subject = run.hit.partition(" ")
    is_stderr = call == "write" and (subject.startswith("2 ") or error.endswith("+"))
    verdict = judge.judge_command(run, good, before, scenarios.in_between(scenario), scenario.told, errors_are_lost=is_stderr)
    if verdict.outcome == judge.LEFTOVER and is_not_removable(call, subject, verdict.text, error):
        rest = {name: content for name, content in run.tree.items() if not (name + "/").startswith(verdict.text + "/")}
        return judge_run(scenario, dataclasses.replace(run, tree=rest), good, before, error)
    if verdict.outcome == judge.AS_BEFORE and run.number == 0 and is_lost_result(scenario, call, subject, error):
        return judge.Verdict(judge.WRONG, f"status 0 although the result's {call} failed")
    return verdict


def is_not_removable(call, subject, name, error):
    """Whether what failed was the removal of what is left: it then stays. A folder is opened and read for that."""
    if error == "EMFILE+":
        return name.startswith("tmp/")
    if call == "open":
        return subject.endswith("/run/" + name)
    return call in ("unlink", "getdents", "stat") and f"/run/{name}" in subject


def is_lost_result(scenario, call, subject, error):
    """Temporary files are none, and an interrupted call may be made again."""
    if not scenario.writes or call not in RESULT_CALLS or error.rstrip("+") not in ("EIO", "ENOSPC"):
        return False
    if call == "rename":
        return True
    return subject.endswith(" for writing") and "/run/" in subject and "/run/tmp/" not in subject
