"""The table of what was tried and what came of it."""
import collections
import dataclasses

import judge

SHOWN_OF_A_ROW = 5


@dataclasses.dataclass
class Row:
    counts: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    findings: list = dataclasses.field(default_factory=list)  # (point, outcome, text, hit)
    proofs: collections.Counter = dataclasses.field(default_factory=collections.Counter)  # of what is excused


class Table:
    """Rows by (scenario, what failed)."""

    def __init__(self, subset):
        self.subset = subset
        self.rows = {}

    def add(self, scenario, what, point, verdict, hit=""):
        row = self.rows.setdefault((scenario, what), Row())
        row.counts[verdict.outcome] += 1
        if verdict.outcome in judge.BAD:
            row.findings.append((point, verdict.outcome, verdict.text, hit))
        elif verdict.outcome in judge.EXCUSED:
            row.proofs[verdict.outcome, verdict.text] += 1

    def total(self, outcomes=None):
        return sum(count for row in self.rows.values() for outcome, count in row.counts.items()
                   if outcomes is None or outcome in outcomes)

    def bad(self):
        return self.total(judge.BAD)

    def text(self):
        lines = [("scenario", "what fails", "points", *judge.OUTCOMES)]
        for (scenario, what), row in sorted(self.rows.items()):
            counts = (str(row.counts[name] or "") for name in judge.OUTCOMES)
            lines.append((scenario, what, str(sum(row.counts.values())), *counts))
        lines.append(("all", "", str(self.total()), *(str(self.total({name}) or "") for name in judge.OUTCOMES)))
        return _aligned(lines)

    def findings_text(self, most=None):
        """What is wrong, row by row; the point can be tried again by its number."""
        text = []
        for (scenario, what), row in sorted(self.rows.items()):
            for point, outcome, reason, hit in row.findings[:most]:
                at = f" [{hit}]" if hit else ""
                text.append(f"{outcome}: {self.subset} {scenario}, {what}, at {point}{at}: {reason}")
            if most is not None and len(row.findings) > most:
                text.append(f"  and {len(row.findings) - most} more of {scenario}, {what}")
        return "\n".join(text)

    def proofs_text(self):
        proofs = sum((row.proofs for row in self.rows.values()), collections.Counter())
        return "\n".join(f"{count} x {outcome}: {proof}" for (outcome, proof), count in proofs.most_common())


def _aligned(lines):
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    def format_line(line):
        return "  ".join(cell.ljust(width) if column < 2 else cell.rjust(width)
                         for column, (cell, width) in enumerate(zip(line, widths))).rstrip()
    return "\n".join(format_line(line) for line in lines)
