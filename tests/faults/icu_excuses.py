"""What is ICU's own, without memory: a crash, a wait for itself, or something that failed once and is remembered for ever. Each is
excused only with a proof, for the same may come from code of ours."""
import judge

# How the C library waits for a lock: the innermost calls of a thread that waits in vain.
WAITS = ("futex_wait", "lll_lock_wait", "pthread_mutex_lock", "pthread_cond_wait", "pthread_once_slow", "pthread_once")
# Functions of ICU's that are given nothing: what they use when they crash is ICU's own, whoever calls them.
GIVEN_NOTHING = ("uloc_getDefault", "locale_get_default")
FAILED = b"failed: "


def excuse_ending(verdict, frames):
    """A crash is ICU's own when nothing but the C library stands between it and ICU, which called itself to get there, or was given
    nothing: what ICU's functions were given by others they look at first. A hang is one when ICU waits for a lock."""
    outside = [frame for frame in frames if not frame.startswith(("libc.so", "ld-linux"))]
    own = 0
    while own < len(outside) and outside[own].startswith("libicu"):
        own += 1
    if verdict.outcome == judge.CRASH and (own >= 2 or (own == 1 and _is_given_nothing(outside[0]))):
        return judge.Verdict(judge.ICU_CRASH, judge.calls_text(outside[:4]))
    if verdict.outcome == judge.HANG and own >= 1 and _is_wait(frames[0]):
        return judge.Verdict(judge.ICU_HANG, judge.calls_text(outside[:4]))
    return verdict


def _is_given_nothing(frame):
    return frame.partition(" ")[2].startswith(GIVEN_NOTHING)


def _is_wait(frame):
    name = frame.partition(" ")[2].partition("@")[0]
    return name.removeprefix("__GI_").lstrip("_") in WAITS


def judge_asked(run, good):
    """The verdict about a program that has asked ICU too, in both runs. What is wrong in the end is ICU's when it gives the same
    wrong text, or none, for what makes up each wrong line."""
    verdict = judge.judge_program(_without_answers(run), _without_answers(good))
    if verdict.outcome != judge.WRONG or run.number != 0 or run.kind != "exit":
        return verdict
    found, wanted = _parts(run.out), _parts(good.out)
    broken = _broken_answers(found[2], wanted[2])
    # That ICU has no memory the library sees at once; the C library falls back to another time zone without a word.
    has_no_zone = any(question.startswith(b"local ") for question, _, _ in broken)
    first = _proof(found[0], wanted[0], broken if has_no_zone else [])
    again = _proof(found[1], wanted[1], broken)
    if not found[0].startswith(b"error: ") and found[0] != wanted[0] and not first:
        return verdict
    if found[1] != wanted[1] and not again:
        return verdict
    return judge.Verdict(judge.ICU_KEPT, again or first)


def _parts(out):
    """What was seen while something failed, what was seen afterwards, and ICU's answers."""
    first, _, rest = out.partition(b"\nagain\n")
    again, _, answers = rest.partition(b"\nicu\n")
    return first, again, answers


def _without_answers(run):
    out, separator, _ = run.out.partition(b"\nicu\n")
    return judge.Run(run.kind, run.number, out + separator[:1], run.err, frames=run.frames, left_running=run.left_running)


def _broken_answers(found, wanted):
    """(question, answer, right answer) of those that ICU gets wrong by itself."""
    right = dict(line.split(b"\t", 1) for line in wanted.splitlines())
    answers = (line.split(b"\t", 1) for line in found.splitlines())
    return [(question, answer, right[question]) for question, answer in answers if answer != right[question]]


def _proof(found, wanted, broken):
    return _proof_of_error(broken) if found.startswith(b"error: ") else _proof_of_texts(found, wanted, broken)


def _proof_of_error(broken):
    return next((_said(question, answer) for question, answer, _ in broken if answer.startswith(FAILED)), "")


def _proof_of_texts(found, wanted, broken):
    """The first answer that explains a line, if each line that is wrong is explained."""
    pairs = list(zip(found.splitlines(), wanted.splitlines(), strict=False))
    if len(found.splitlines()) != len(wanted.splitlines()):
        return ""
    proofs = [_explanation(line, right, broken) for line, right in pairs if line != right]
    return proofs[0] if proofs and all(proofs) else ""


def _explanation(line, right_line, broken):
    for question, answer, right in broken:
        if right in right_line and (answer in line or answer.startswith(FAILED)):
            return _said(question, answer)
    return ""


def _said(question, answer):
    return f"{question.decode()}: {answer.decode(errors='replace')}"
