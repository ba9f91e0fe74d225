"""Threads with little stack: the cases, and their sizes, are those of scenarios/small_stacks.cpp."""
import dataclasses

import judge
import runners
import scenarios

KIB = 1024
NESTED = "{0,choice,0#"
# An apostrophe before a bar quotes it inside a choice; to whoever does not know, the braces behind are quoted instead.
HIDDEN = "{0,choice,0#'|'"


def _case(name, *files):
    return scenarios.Scenario(name, (name,), files, program="small_stacks", executable="small_stacks")


SCENARIOS = [
    *(_case(name, "storage.ldf", "storage_aux.ldf", "messages", "log.conf")
      for name in ("filter", "reads", "adds", "narrow", "icu", "buffers", "catalog", "code-pages", "debug-log")),
    *(_case(name, file) for name, file in (
        ("deep-template", "deep.ldf"), ("long-template", "long.ldf"), ("hidden-braces", "hidden.ldf"),
        ("long-hidden-braces", "long_hidden.ldf"), ("open-braces", "open.ldf"))),
]


@dataclasses.dataclass(frozen=True)
class Work:
    scenario: scenarios.Scenario
    what: str
    points: tuple

    def run(self, worker):
        run = runners.run_traced(worker.place, self.scenario, worker.tree(self.scenario))
        yield "its end", judge.judge_ending(run), ""


def plan(_worker, _scenario):
    return None


def works(scenario, _plan, _short, _at):
    yield Work(scenario, "small stack", (0,))


def templates():
    """The definition files of the last cases and their templates, behind a reference to the argument."""
    return {
        "deep.ldf": nested(NESTED, 99),
        "long.ldf": "0123456789abcdef" * (4 * KIB - 1),
        "hidden.ldf": nested(HIDDEN, 2600 // len(HIDDEN + "}")),
        "long_hidden.ldf": nested(HIDDEN, 64 * KIB // len(HIDDEN + "}") - 1),
        "open.ldf": NESTED * (64 * KIB // len(NESTED) - 1),
    }


def nested(opening, depth):
    return opening * depth + "x" + "}" * depth
