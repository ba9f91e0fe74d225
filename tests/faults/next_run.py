"""The run after one in which something failed: it starts from what that one has left, and nothing fails."""
import judge


def judge_receiver(scenario, failed, run, good):
    """What is wrong when the next one went on where the one in which something failed has ended: then nothing may be lost."""
    if run.kind != "exit" or run.number not in (0, good.number):
        return judge.Verdict(judge.WRONG, f"the next one ended with {run.kind} {run.number}: {judge.last_line(run.err)}")
    if run.tree != good.tree:
        return judge.Verdict(judge.WRONG, "after the next one there are " + judge.difference(run, good))
    if scenario.hands_over and set(good.out.splitlines()) != set((failed.out + b"\n" + run.out).splitlines()) - {b""}:
        return judge.Verdict(judge.WRONG, "together with the next one it did not print what it should")
    return None


def judge_next(scenario, run, good, before):
    """What is wrong with the next run; None when it ended as it should."""
    if run.kind != "exit" or run.number != good.number:
        return judge.Verdict(judge.WRONG, f"the next one ended with {run.kind} {run.number}: {judge.last_line(run.err)}")
    names = {name for name in (*before, *good.tree) if not name.startswith("tmp/")}
    if not scenario.counters and any(run.tree.get(name) != good.tree.get(name) for name in names):
        return judge.Verdict(judge.WRONG, "the next one did not write what it should")
    return None


def judge_finished(scenario, verdict, run, good, before, run_again):
    """The verdict, unless a file is left between before and after and the next run does not bring it to its end. `run_again` makes
    that run, from a tree."""
    if scenario.states and verdict.outcome == judge.ERROR:
        return judge_receiver(scenario, run, run_again(run.tree), good) or verdict
    if verdict.outcome in judge.BAD or not scenario.manifests or run.tree == good.tree:
        return verdict
    return judge_next(scenario, run_again(run.tree), good, before) or verdict
