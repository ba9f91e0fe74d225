"""Tests of the gate on instruction counts."""
import importlib.util
import pathlib
import unittest

PATH = pathlib.Path(__file__).resolve().parents[2] / "bench" / "instructions.py"
SPEC = importlib.util.spec_from_file_location("instructions", PATH)
instructions = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(instructions)

GATE = instructions.against("A narrow", "A/narrow/qzlog", "fmt", 1.5)


class InstructionGate(unittest.TestCase):
    def setUp(self):
        self.addCleanup(setattr, instructions, "GATES", instructions.GATES)
        instructions.GATES = [GATE]

    def findings(self, ratio, committed):
        return instructions.find_regressions({GATE.name: ratio}, {GATE.name: committed})

    def test_ratio_within_the_tolerance_no_finding(self):
        self.assertEqual(self.findings(1.029, 1.0), [])

    def test_ratio_above_the_tolerance_finding(self):
        self.assertEqual(self.findings(1.04, 1.0), ["A narrow: 1.040 x fmt, baseline 1.000, at most 1.030"])

    def test_target_met_by_the_baseline_finding_above_the_target(self):
        self.assertEqual(self.findings(1.51, 1.49), ["A narrow: 1.510 x fmt, baseline 1.490, at most 1.500"])

    def test_target_missed_by_the_baseline_tolerance_counts(self):
        self.assertEqual(self.findings(2.05, 2.0), [])

    def test_gate_without_baseline_finding(self):
        self.assertEqual(instructions.find_regressions({GATE.name: 1.0}, {}),
                         ["A narrow: no baseline; run ./dev bench --instructions --update"])

    def test_several_peers_ratio_to_their_sum(self):
        gate = instructions.Gate("D", "D/qzlog", [(1.0, "construct"), (0.5, "disabled")], "both", 1.0)
        instructions.GATES = [gate]
        self.assertEqual(instructions.ratios_of({"D/qzlog": 30, "construct": 10, "disabled": 10}), {"D": 2.0})

    def test_icu_called_finding(self):
        self.assertEqual(instructions.find_icu_calls({"quiet": 0.0, "loud": 12.0}), ["loud: calls ICU"])


if __name__ == "__main__":
    unittest.main()
