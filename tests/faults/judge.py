"""What is right and what is wrong about a run in which something failed."""
import dataclasses
import itertools
import re

# The outcomes, the good ones first. Of the excused ones there is a proof, see icu_excuses.py.
AS_BEFORE = "as before"    # the same result as without the fault
ERROR = "clean error"      # said so, and left every file as it was or as it should become
ICU_CRASH = "ICU's crash"  # without memory, inside ICU
ICU_HANG = "ICU's hang"    # without memory, ICU waits for itself
ICU_KEPT = "ICU's for good"  # ICU or the C library remembers what failed, and says so itself
WRONG = "wrong"
LEFTOVER = "leftover"      # a temporary file or a process stays behind
CRASH = "crash"
HANG = "hang"
EXCUSED = [ICU_CRASH, ICU_HANG, ICU_KEPT]
OUTCOMES = [AS_BEFORE, ERROR, *EXCUSED, WRONG, LEFTOVER, CRASH, HANG]
BAD = {WRONG, LEFTOVER, CRASH, HANG}

STATUS_OF_ERRORS = (1, 2)
ENDS_A_PROCESS = ("__pthread_kill_implementation", "raise", "__libc_message")


@dataclasses.dataclass
class Run:
    """What came of a run. `hit` says which system call failed, `frames` where the program crashed."""
    kind: str = "exit"
    number: int = 0
    out: bytes = b""
    err: bytes = b""
    tree: dict = dataclasses.field(default_factory=dict)
    left_running: int = 0
    hit: str = ""
    frames: list = dataclasses.field(default_factory=list)
    sequence: list = dataclasses.field(default_factory=list)  # the calls of a run in which none failed
    points: int = 0  # how many things could have failed


@dataclasses.dataclass
class Verdict:
    outcome: str
    text: str = ""


def judge_command(run, good, before, in_between=None, told="", errors_are_lost=False):
    """A command's run beside the `good` one without a fault, in a folder that held the tree `before`.

    in_between: a dictionary of path to a function of (bytes before, bytes after the good run, bytes now), for files that
    are allowed states between the two. told: a regular expression; a line of the output that matches tells of a failure as
    part of the result. errors_are_lost: what it writes to standard error cannot be seen.
    """
    return (_ended(run) or _files(run, good, before, in_between or {}) or _told(run, good, told)
            or _status(run, good, errors_are_lost))


def checked(good, is_program):
    """The run without a fault, which is what the others are compared with: it has to be one."""
    if good.kind != "exit" or (is_program and (good.number != 0 or good.out.count(b"result\n") != 2)):
        raise RuntimeError(f"wrong without a fault: {good.kind} {good.number}: {good.out[:200]!r} {last_line(good.err)}")
    return good


def judge_program(run, good):
    """A program of the folder scenarios/, which says what it saw while something failed, and "again" when nothing did."""
    bad_end = _ended(run)
    if bad_end:
        return bad_end
    first, _, again = run.out.partition(b"\nagain\n")
    good_first, _, good_again = good.out.partition(b"\nagain\n")
    ending = last_line(first[:first.find(b"\n")] if b"\n" in first else first)
    if run.number != 0:
        return Verdict(WRONG, f"status {run.number}: {ending} {last_line(run.err)}")
    if first == good_first:
        verdict = Verdict(AS_BEFORE)
    elif ending.startswith("error: "):
        verdict = Verdict(ERROR, ending)
    else:
        return Verdict(WRONG, f"{ending}, but saw {_first_difference(first, good_first)}")
    if again != good_again:
        return Verdict(WRONG, f"{ending}, but then, with nothing failing any more, {_first_difference(again, good_again)}")
    return verdict


def judge_ending(run):
    """A program of which only matters how it ends."""
    if _ended(run) or run.number == 0:
        return _ended(run) or Verdict(AS_BEFORE)
    return Verdict(WRONG, f"status {run.number}: {last_line(run.err)}")


def _first_difference(text, good):
    for line, wanted in itertools.zip_longest(text.splitlines(), good.splitlines()):
        if line != wanted:
            return f"{line} instead of {wanted}"
    return "other line ends"


def calls_text(frames):
    """Innermost first, without the parameters, and without how the C library ends a process."""
    names = [frame.replace("(anonymous namespace)::", "").split("(")[0].strip() for frame in frames]
    names = [name for name in names if name.partition(" ")[2] not in ENDS_A_PROCESS]
    return " < ".join(names[:8])


def last_line(text):
    lines = text.decode(errors="replace").strip().splitlines()
    return lines[-1] if lines else ""


def _ended(run):
    if run.kind == "hang":
        return Verdict(HANG, calls_text(run.frames) or last_line(run.err))
    if run.kind == "signal":
        return Verdict(CRASH, f"signal {run.number}: " + (calls_text(run.frames) or last_line(run.err)))
    if run.left_running:
        return Verdict(LEFTOVER, f"{run.left_running} process(es) still running")
    return None


def _files(run, good, before, in_between):
    for name in sorted(set(run.tree) - set(before) - set(good.tree)):
        return Verdict(LEFTOVER, name)
    for name in sorted(set(before) | set(good.tree)):
        now = run.tree.get(name)
        if now == before.get(name) or now == good.tree.get(name):
            continue
        if name in in_between and in_between[name](before.get(name), good.tree.get(name), now):
            continue
        size = "missing" if now is None else f"{len(now)} bytes" if isinstance(now, bytes) else "something else"
        return Verdict(WRONG, f"{name} is neither as before nor as it should be: {size}; status {run.number}")
    return None


def _told(run, good, told):
    if not told or run.number not in (good.number, *STATUS_OF_ERRORS):
        return None
    lines = set(run.out.splitlines()) - set(good.out.splitlines())
    found = sorted(line.decode(errors="replace") for line in lines if re.search(told.encode(), line))
    return Verdict(ERROR, found[0]) if found else None


def _status(run, good, errors_are_lost):
    said = set(run.err.splitlines())
    if run.number == good.number:
        same = run.out == good.out and run.tree == good.tree
        if same and (errors_are_lost or said >= set(good.err.splitlines())):
            return Verdict(AS_BEFORE)
        if errors_are_lost and run.number in STATUS_OF_ERRORS:
            return Verdict(ERROR)
        if run.number == 0 or not said - set(good.err.splitlines()):
            return Verdict(WRONG, f"status {run.number} with {difference(run, good, True)}; standard error: {last_line(run.err)!r}")
    if run.number not in STATUS_OF_ERRORS:
        return Verdict(WRONG, f"status {run.number}: {last_line(run.err)}")
    if not errors_are_lost and not said - set(good.err.splitlines()):
        return Verdict(WRONG, f"status {run.number} without a text on standard error")
    return Verdict(ERROR, last_line(run.err))


def difference(run, good, with_output=False):
    if with_output and run.out != good.out:
        return "another output"
    if run.tree != good.tree:
        return "other files: " + ", ".join(sorted(
            name for name in set(run.tree) | set(good.tree) if run.tree.get(name) != good.tree.get(name)))
    return "fewer diagnostics"
