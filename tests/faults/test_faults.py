"""Tests of the harness: what it lets fail does fail, and the judge finds each way of taking it badly.

QZLOG_BUILD_DIR names the build with the programs.
"""
import os
import pathlib
import signal
import struct
import tempfile
import unittest

import call_points
import folders
import icu_excuses
import judge
import memory_points
import next_run
import process_points
import runners
import scenarios
import table

TOOLS = runners.Tools(pathlib.Path(os.environ["QZLOG_BUILD_DIR"]).resolve())
BEFORE = {"result": b"old"}
GOOD = judge.Run(out=b"done\n", tree={"result": b"new"})


def outcome(**fields):
    run = {"out": GOOD.out, "tree": GOOD.tree, **fields}
    return judge.judge_command(judge.Run(**run), GOOD, BEFORE).outcome


class JudgeOfCommands(unittest.TestCase):
    def test_same_result_is_as_before(self):
        self.assertEqual(outcome(), judge.AS_BEFORE)

    def test_more_diagnostics_than_before_are_no_fault(self):
        self.assertEqual(outcome(err=b"warning: something\n"), judge.AS_BEFORE)

    def test_error_with_a_text_and_old_files_is_clean(self):
        for status in (1, 2):
            self.assertEqual(outcome(number=status, out=b"", err=b"error: no space\n", tree=BEFORE), judge.ERROR)

    def test_error_with_new_files_is_clean(self):
        self.assertEqual(outcome(number=1, err=b"error: cannot close\n"), judge.ERROR)

    def test_error_without_a_text_is_wrong(self):
        self.assertEqual(outcome(number=1, tree=BEFORE), judge.WRONG)

    def test_other_status_is_wrong(self):
        self.assertEqual(outcome(number=127, err=b"error: x\n", tree=BEFORE), judge.WRONG)

    def test_success_with_another_output_is_wrong(self):
        self.assertEqual(outcome(out=b""), judge.WRONG)

    def test_success_with_the_old_file_is_wrong(self):
        self.assertEqual(outcome(tree=BEFORE), judge.WRONG)

    def test_torn_and_lost_files_are_wrong_whatever_is_said(self):
        for tree in ({"result": b"ne"}, {"result": b""}, {}):
            self.assertEqual(outcome(number=1, err=b"error: no space\n", tree=tree), judge.WRONG)

    def test_lost_diagnostics_are_wrong(self):
        good = judge.Run(err=b"warning: a\n", tree=BEFORE)
        run = judge.Run(tree=BEFORE)
        self.assertEqual(judge.judge_command(run, good, BEFORE).outcome, judge.WRONG)
        self.assertEqual(judge.judge_command(run, good, BEFORE, errors_are_lost=True).outcome, judge.AS_BEFORE)

    def test_files_and_processes_that_stay_are_leftovers(self):
        self.assertEqual(outcome(tree={**GOOD.tree, "tmp/x": b""}), judge.LEFTOVER)
        self.assertEqual(outcome(left_running=1), judge.LEFTOVER)

    def test_signals_and_time_outs_have_their_outcomes(self):
        self.assertEqual(outcome(kind="signal", number=11), judge.CRASH)
        self.assertEqual(outcome(kind="hang"), judge.HANG)


    def test_failure_told_in_the_result_is_clean(self):
        good = judge.Run(out=b"fine\n", tree=BEFORE)
        for out, expected in ((b"fine\na: error: x\n", judge.ERROR), (b"fine\na: x\n", judge.WRONG), (b"", judge.WRONG)):
            run = judge.Run(number=1, out=out, tree=BEFORE)
            self.assertEqual(judge.judge_command(run, good, BEFORE, told=": error: ").outcome, expected, out)


class JudgeOfPrograms(unittest.TestCase):
    GOOD = judge.Run(out=b"result\nseen\nagain\nresult\nseen\n")

    def outcome(self, out, **fields):
        return judge.judge_program(judge.Run(out=out, **fields), self.GOOD).outcome

    def test_same_is_as_before(self):
        self.assertEqual(self.outcome(self.GOOD.out), judge.AS_BEFORE)

    def test_stated_failure_and_recovery_is_clean(self):
        self.assertEqual(self.outcome(b"error: QZX_memory_alloc\nagain\nresult\nseen\n"), judge.ERROR)

    def test_other_message_is_wrong(self):
        self.assertEqual(self.outcome(b"result\nother\nagain\nresult\nseen\n"), judge.WRONG)

    def test_no_recovery_is_wrong(self):
        self.assertEqual(self.outcome(b"error: x\nagain\nresult\nother\n"), judge.WRONG)
        self.assertEqual(self.outcome(b"result\nseen\nagain\nerror: x\n"), judge.WRONG)

    def test_failure_that_is_not_stated_is_wrong(self):
        self.assertEqual(self.outcome(b"not stated: std::bad_alloc\nagain\nresult\nseen\n", number=1), judge.WRONG)


class RunsWithoutFault(unittest.TestCase):
    def test_run_that_is_wrong_by_itself_is_refused(self):
        for good, is_program in ((judge.Run("signal", 11), False), (judge.Run("hang"), False), (judge.Run(number=1), True),
                                 (judge.Run(out=b"error: x\nagain\nresult\n"), True)):
            with self.assertRaisesRegex(RuntimeError, "wrong without a fault"):
                judge.checked(good, is_program)

    def test_others_are_taken(self):
        for good, is_program in ((judge.Run(number=1), False), (judge.Run(out=b"result\nagain\nresult\n"), True)):
            self.assertIs(judge.checked(good, is_program), good)


class ExcuseOfIcusEndings(unittest.TestCase):
    def outcome(self, *frames, verdict=judge.CRASH):
        return icu_excuses.excuse_ending(judge.Verdict(verdict), list(frames)).outcome

    def test_crash_within_icu_or_in_what_it_called_of_the_c_library_is_excused(self):
        self.assertEqual(self.outcome("libicuuc.so.72 f", "libicui18n.so.72 g", "libqzlog.so.1 h"), judge.ICU_CRASH)
        self.assertEqual(self.outcome("libc.so.6 strlen", "libicui18n.so.72 f", "libicui18n.so.72 g"), judge.ICU_CRASH)

    def test_crash_of_a_function_that_is_given_nothing_is_excused(self):
        self.assertEqual(self.outcome("libicuuc.so.72 locale_get_default_72", "libqzlog.so.1 g"), judge.ICU_CRASH)
        self.assertEqual(self.outcome("libicuuc.so.72 uloc_getName_72", "libqzlog.so.1 g"), judge.CRASH)

    def test_crash_at_what_icu_was_given_is_not(self):
        self.assertEqual(self.outcome("libicuuc.so.72 f", "libqzlog.so.1 g"), judge.CRASH)
        self.assertEqual(self.outcome("libc.so.6 strlen", "libicuuc.so.72 f", "libqzlog.so.1 g"), judge.CRASH)

    def test_crash_elsewhere_is_not(self):
        self.assertEqual(self.outcome("libqzlog.so.1 f", "libicuuc.so.72 g", "libicuuc.so.72 h"), judge.CRASH)
        self.assertEqual(self.outcome("libc.so.6 abort", "libstdc++.so.6 terminate", "libicuuc.so.72 g"), judge.CRASH)
        self.assertEqual(self.outcome(), judge.CRASH)

    def test_wait_of_icu_for_a_lock_is_excused(self):
        frames = ("libc.so.6 __GI___lll_lock_wait", "libc.so.6 __pthread_mutex_lock@GLIBC_2.2.5", "libicuuc.so.72 f", "libqzlog.so.1 g")
        self.assertEqual(self.outcome(*frames, verdict=judge.HANG), judge.ICU_HANG)

    def test_other_hangs_are_not(self):
        for frames in (("libc.so.6 futex_wait", "libqzlog.so.1 f", "libicuuc.so.72 g"), ("libicuuc.so.72 f", "libqzlog.so.1 g"),
                       ("libc.so.6 read", "libicuuc.so.72 f"), ()):
            self.assertEqual(self.outcome(*frames, verdict=judge.HANG), judge.HANG, frames)

    def test_nothing_else_is_excused(self):
        for verdict in (judge.WRONG, judge.LEFTOVER):
            self.assertEqual(self.outcome("libicuuc.so.72 f", "libicuuc.so.72 g", verdict=verdict), verdict)


class ExcuseOfWhatIcuKeeps(unittest.TestCase):
    """The same wrong end is excused when ICU's own answer explains it, and only then."""
    TEXTS = b"result\nat 23:00\n1.5 of 2\n"
    ANSWERS = b"time\t23:00\nnumber\t1.5\n"
    BROKEN = b"time\t11 PM\nnumber\t1.5\n"
    FAILED = b"time\tfailed: U_X\nnumber\t1.5\n"
    MEMORY = b"error: QZX_memory_alloc\n"

    def verdict(self, first, again, answers, **fields):
        def run(first, again, answers, **fields):
            return judge.Run(out=first + b"again\n" + again + b"icu\n" + answers, **fields)
        return icu_excuses.judge_asked(run(first, again, answers, **fields), run(self.TEXTS, self.TEXTS, self.ANSWERS))

    def outcome(self, again, answers, first=MEMORY, **fields):
        return self.verdict(first, again, answers, **fields).outcome

    def test_wrong_text_is_icus_when_icu_gives_it_too(self):
        again = self.TEXTS.replace(b"23:00", b"11 PM")
        self.assertEqual(self.outcome(again, self.BROKEN), judge.ICU_KEPT)
        self.assertEqual(self.outcome(again, self.FAILED), judge.ICU_KEPT)

    def test_wrong_text_is_ours_when_icu_is_right(self):
        self.assertEqual(self.outcome(self.TEXTS.replace(b"23:00", b"11 PM"), self.ANSWERS), judge.WRONG)

    def test_other_wrong_text_than_icus_is_ours(self):
        self.assertEqual(self.outcome(self.TEXTS.replace(b"23:00", b"12:00"), self.BROKEN), judge.WRONG)

    def test_wrong_line_beside_one_of_icus_is_ours(self):
        again = self.TEXTS.replace(b"23:00", b"11 PM").replace(b"1.5", b"15")
        self.assertEqual(self.outcome(again, self.BROKEN), judge.WRONG)
        self.assertEqual(self.outcome(self.TEXTS.replace(b"1.5", b"15"), self.FAILED), judge.WRONG)

    def test_missing_line_is_ours(self):
        self.assertEqual(self.outcome(b"result\nat 11 PM\n", self.BROKEN), judge.WRONG)

    def test_lasting_error_is_icus_when_icu_fails_too(self):
        self.assertEqual(self.outcome(self.MEMORY, self.FAILED), judge.ICU_KEPT)

    def test_lasting_error_is_ours_when_icu_answers(self):
        for answers in (self.ANSWERS, self.BROKEN):
            self.assertEqual(self.outcome(self.MEMORY, answers), judge.WRONG)

    def test_what_was_wrong_at_once_is_ours(self):
        wrong = self.TEXTS.replace(b"23:00", b"11 PM")
        self.assertEqual(self.outcome(wrong, self.BROKEN, first=wrong), judge.WRONG)
        self.assertEqual(self.outcome(self.TEXTS, self.BROKEN, first=wrong), judge.WRONG)
        self.assertEqual(self.outcome(wrong, self.BROKEN, number=1), judge.WRONG)

    def test_time_zone_of_the_c_library_may_be_wrong_at_once(self):
        wrong = self.TEXTS.replace(b"23:00", b"12:00")
        self.ANSWERS, broken = self.ANSWERS + b"local time\t23:00\n", self.ANSWERS + b"local time\t12:00\n"
        for again in (wrong, self.TEXTS):
            self.assertEqual(self.outcome(again, broken, first=wrong), judge.ICU_KEPT)
            self.assertEqual(self.outcome(again, self.ANSWERS, first=wrong), judge.WRONG)
        self.assertEqual(self.outcome(wrong, broken, first=wrong.replace(b"1.5", b"15")), judge.WRONG)

    def test_right_and_stated_ends_stay_what_they_are(self):
        self.assertEqual(self.outcome(self.TEXTS, self.BROKEN), judge.ERROR)
        self.assertEqual(self.outcome(self.TEXTS, self.ANSWERS, first=self.TEXTS), judge.AS_BEFORE)

    def test_crashes_and_hangs_are_not_excused(self):
        self.assertEqual(self.outcome(self.MEMORY, self.FAILED, kind="signal", number=11), judge.CRASH)
        self.assertEqual(self.outcome(self.MEMORY, self.FAILED, kind="hang"), judge.HANG)


class Counters(unittest.TestCase):
    @staticmethod
    def file(**counts):
        return b"".join(struct.pack(">8i", 32, 2026, 11, int(day[1:]), 7, count, 0, 0) for day, count in counts.items())

    def test_counts_between_before_and_after_are_in_order(self):
        for now in (self.file(d1=1), self.file(d1=2), self.file(d1=3, d2=1), b""[:0] + self.file(d1=1, d2=1)):
            self.assertTrue(scenarios.is_partly_counted(self.file(d1=1), self.file(d1=3, d2=1), now))

    def test_lost_torn_and_doubled_counts_are_not(self):
        for now in (b"", self.file(d1=4), self.file(d1=1)[:20], self.file(d1=1) * 2, self.file(d1=1, d3=1)):
            self.assertFalse(scenarios.is_partly_counted(self.file(d1=1), self.file(d1=3), now))


class Receivers(unittest.TestCase):
    LINES = scenarios.command("x", "x", lines=("new/entries.jsonl",), states=("state",))
    READS = scenarios.command("x", "x", states=("state",), hands_over=True)

    def test_whole_lines_of_those_that_come_are_in_order(self):
        for now, expected in ((b"a\n", True), (b"a\nc\n", True), (b"a\nb\nb\n", True), (b"", False), (b"b\na\n", False),
                              (b"a\nb", False), (b"a\nx\n", False)):
            self.assertEqual(scenarios.is_partly_delivered(b"a\n", b"a\nb\nc\n", now), expected, now)

    def finished(self, scenario, failed, then, good):
        return next_run.judge_finished(scenario, judge.Verdict(judge.ERROR), failed, good, {}, lambda _: then).outcome

    def test_what_is_not_there_after_the_next_run_is_lost(self):
        good, lost = (judge.Run(tree={"new/entries.jsonl": lines, "state": b"2"}) for lines in (b"a\nb\n", b"b\n"))
        failed = judge.Run(number=1, tree={"state": b"1"})
        self.assertEqual(self.finished(self.LINES, failed, good, good), judge.ERROR)
        self.assertEqual(self.finished(self.LINES, failed, lost, good), judge.WRONG)
        self.assertEqual(self.finished(self.LINES, failed, judge.Run(number=2, tree=good.tree), good), judge.WRONG)

    def test_what_a_group_settled_without_printing_is_lost(self):
        good = judge.Run(out=b"a\nb\n", tree={"state": b"2"})
        rest = judge.Run(out=b"b\n", tree=good.tree)
        self.assertEqual(self.finished(self.READS, judge.Run(number=1, out=b"a\n"), rest, good), judge.ERROR)
        self.assertEqual(self.finished(self.READS, judge.Run(number=1), rest, good), judge.WRONG)

    def test_lines_that_were_sent_again_are_steady_but_no_more(self):
        def kept(content):
            return folders.steady({"new/entries.jsonl": content, "ship.json.lock": b"7"})
        self.assertEqual(kept(b"a\na\nb\n"), kept(b"a\nb\n"))
        self.assertNotEqual(kept(b"a\na\na\nb\n"), kept(b"a\nb\n"))
        self.assertEqual(folders.steady({"metrics.json": b"{\"a\": 1}"}), {})
        self.assertEqual(folders.steady({"metrics.json": b"{"}), {"metrics.json": b"{"})


class KilledCommands(unittest.TestCase):
    SCENARIO = scenarios.command("x", "x")

    def verdict(self, tree, by=signal.SIGKILL):
        return process_points.judge_killed(self.SCENARIO, judge.Run("signal", -by, tree=tree), GOOD, BEFORE, by)

    def test_old_and_new_files_beside_temporary_ones_are_in_order(self):
        for tree in (BEFORE, GOOD.tree, {**BEFORE, "result.tmp": b"x"}):
            self.assertIsNone(self.verdict(tree))

    def test_torn_file_is_wrong(self):
        self.assertEqual(self.verdict({"result": b"n"}).outcome, judge.WRONG)

    def test_who_can_catch_the_signal_leaves_nothing(self):
        self.assertIsNone(self.verdict(GOOD.tree, signal.SIGTERM))
        self.assertEqual(self.verdict({**BEFORE, "result.tmp": b"x"}, signal.SIGTERM).outcome, judge.LEFTOVER)


class LostResults(unittest.TestCase):
    WRITING = scenarios.command("x", "x", writes=True)

    def lost(self, hit, error="EIO", scenario=WRITING):
        call, _, subject = hit.partition(" ")
        return call_points.is_lost_result(scenario, call, subject, error)

    def test_failed_write_or_close_of_a_result_has_to_be_said(self):
        for hit in (*(f"{call} 4 /w/run/a for writing" for call in ("write", "close", "fsync")), "rename a.tmp"):
            self.assertTrue(self.lost(hit), hit)

    def test_what_is_read_temporary_or_interrupted_need_not(self):
        self.assertFalse(self.lost("close 4 /w/run/a"))
        self.assertFalse(self.lost("close 4 /w/run/tmp/a for writing"))
        self.assertFalse(self.lost("write 4 /w/run/a for writing", "EINTR"))
        self.assertFalse(self.lost("close 4 /w/run/a for writing", scenario=scenarios.command("x", "x")))


class Removals(unittest.TestCase):
    def test_what_cannot_be_removed_stays(self):
        good = judge.Run(tree={})
        run = judge.Run(tree={"tmp/a": folders.FOLDER, "tmp/a/b": b""})
        for hit, expected in (("unlink /w/run/tmp/a/b", judge.AS_BEFORE), ("open /w/run/tmp/a", judge.AS_BEFORE),
                              ("open /w/run/tmp/a/b", judge.LEFTOVER), ("write 3 /w/run/tmp/a/b for writing", judge.LEFTOVER)):
            run.hit = hit
            found = call_points.judge_run(scenarios.command("x", "x"), run, good, {}, "EIO")
            self.assertEqual(found.outcome, expected, hit)


class Tables(unittest.TestCase):
    def test_bad_outcomes_are_counted_and_named(self):
        tried = table.Table("memory")
        tried.add("a", "once", 1, judge.Verdict(judge.AS_BEFORE))
        tried.add("a", "once", 2, judge.Verdict(judge.CRASH, "why"), "write 4 x")
        self.assertEqual((tried.total(), tried.bad()), (2, 1))
        self.assertEqual(tried.findings_text(), "crash: memory a, once, at 2 [write 4 x]: why")
        self.assertEqual(tried.text().splitlines()[1].split(), ["a", "once", "2", "1", "1"])

    def test_sample_is_spread_and_has_the_last_point(self):
        self.assertEqual(memory_points.sample(10, 3), [4, 7, 10])
        self.assertEqual(memory_points.sample(3, 10), [1, 2, 3])
        self.assertEqual(memory_points.sample(0, 10), [])


class WithPlace(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.place = runners.Place(TOOLS, folder.name)
        self.addCleanup(setattr, runners, "TIMEOUT_MS", runners.TIMEOUT_MS)
        runners.TIMEOUT_MS = 1000
        self.tree = {"tmp": folders.FOLDER, "result": b"old"}

    @staticmethod
    def scenario(how):
        return scenarios.Scenario("broken", (how,), program="broken_program", executable="broken_program", writes=True)


class Folders(WithPlace):
    def test_tree_is_restored(self):
        self.place.prepare(self.tree)
        run = self.place.run
        (run / "result").write_bytes(b"new")
        (run / "tmp/more").mkdir()
        (run / "tmp/more/file").write_bytes(b"x")
        (run / "link").symlink_to("nowhere")
        self.assertEqual(set(folders.read_tree(run)), {"tmp", "tmp/more", "tmp/more/file", "result", "link"})
        folders.write_tree(run, self.tree)
        self.assertEqual(folders.read_tree(run), self.tree)


    def test_what_came_meanwhile_is_removed(self):
        self.place.prepare(self.tree)
        (self.place.run / "more").write_bytes(b"x")
        self.place.forget()
        self.place.prepare(self.tree)
        self.assertEqual(folders.read_tree(self.place.run), self.tree)


class FailingMemory(WithPlace):
    """Each way of a program that takes it badly."""
    EXPECTED = {"honest": judge.ERROR, "silent": judge.WRONG, "careless": judge.WRONG, "crash": judge.CRASH,
                "hang": judge.HANG, "child": judge.LEFTOVER}

    def test_each_outcome_is_found(self):
        for how, expected in self.EXPECTED.items():
            server = runners.ForkServer(self.place, self.scenario(how))
            good = server.run(self.tree, 0, False)
            self.assertEqual((good.kind, good.number, good.tree["result"][:8]), ("exit", 0, b"a result"), how)
            self.assertGreaterEqual(good.points, 1)
            verdict = judge.judge_command(server.run(self.tree, 1, False), good, self.tree)
            server.close()
            self.assertEqual(verdict.outcome, expected, f"{how}: {verdict.text}")


class MarkedPrograms(WithPlace):
    """Only what happens between the marks counts, and only there something fails."""

    def test_each_allocation_between_the_marks_can_fail(self):
        scenario = next(one for one in scenarios.PROGRAMS if one.name == "counter-new/cold")
        server = runners.ForkServer(self.place, scenario)
        self.addCleanup(server.close)
        good = judge.checked(server.run(self.tree, 0, False), True)
        self.assertIn(good.points, range(1, 100))
        outcomes = [judge.judge_program(server.run(self.tree, nth, True), good).outcome for nth in range(1, good.points + 2)]
        self.assertEqual(outcomes[-1], judge.AS_BEFORE)
        self.assertEqual(outcomes[0], judge.ERROR)


@unittest.skipUnless(TOOLS.can_trace(), "processes cannot be traced here")
class FailingCalls(WithPlace):
    EXPECTED = {"honest": judge.ERROR, "silent": judge.WRONG, "careless": judge.WRONG, "crash": judge.CRASH,
                "hang": judge.HANG, "leftover": judge.LEFTOVER, "child": judge.LEFTOVER}

    def run_with(self, how, **fault):
        return runners.run_traced(self.place, self.scenario(how), self.tree, "open,write,close,rename", **fault)

    def number_of(self, beginning):
        return next(number for number, call in enumerate(self.run_with("honest").sequence, 1) if call.startswith(beginning))

    def test_each_outcome_is_found(self):
        good = self.run_with("honest")
        for error in ("ENOSPC", "short"):
            for how, expected in self.EXPECTED.items():
                run = self.run_with(how, nth=self.number_of("write"), error=error)
                self.assertIn("result.new for writing", run.hit)
                found = call_points.judge_run(self.scenario(how), run, good, self.tree, error)
                self.assertEqual(found.outcome, expected, f"{how} {error}: {found.text}")

    def test_short_transfer_moves_half(self):
        run = self.run_with("careless", nth=self.number_of("write"), error="short")
        self.assertEqual(len(run.tree["result"]), len(self.run_with("honest").tree["result"]) // 2)

    def test_crash_shows_where(self):
        run = self.run_with("crash", nth=self.number_of("write"))
        self.assertTrue(any(frame.startswith("broken_program ") for frame in run.frames), run.frames)

    def test_hang_shows_where(self):
        run = self.run_with("hang", nth=self.number_of("write"))
        self.assertTrue(any(frame.startswith("broken_program ") for frame in run.frames), run.frames)

    def test_failed_close_gives_the_descriptor_back(self):
        run = self.run_with("honest", nth=self.number_of("close"))
        self.assertEqual((run.kind, run.number), ("exit", 1))


if __name__ == "__main__":
    unittest.main()
