#ifndef QZLOG_TESTS_SUPPORT_SUPPORT_H
#define QZLOG_TESTS_SUPPORT_SUPPORT_H

/// What the tests of every folder share, all in namespace qz_test; link qzlog_test_support.
///
///   TempDir folder;                                  an empty folder of the test's own, removed at the end
///   folder.write("a.ldf", bytes); folder.read("a.ldf"); folder.path("a.ldf");
///
///   DebugLogFile log(3);                             level 3 in a working directory of the test's own
///   EXPECT_EQ(log.records(), Texts({"logcfg:12 text\n"}));         date, process and thread checked and cut off
///   EXPECT_EQ(log.unnumbered_records(), Texts({"logcfg:# text\n"}));
///
///   EXPECT_EQ(thrown_by([&] { entry.use(); }), thrown<QZX_logging_misc>("text"));      nullptr: a null message
///   EXPECT_EQ(thrown_by([&] { ... }), kNoMemory);
///
///   { AllocationFailure failure(3); use(); }         this thread's third allocation (new or strdup) fails
///   EXPECT_GT(FailEveryAllocation([&] { use(); }, [&] { check_that_nothing_changed(); }), 0U);
///
///   SetEnv variable("NAME", "value"); UnsetEnv("NAME"); TimeZone zone("Asia/Kathmandu"); CLocale locale("C.UTF-8");
///
///   WorkingFolder inside(folder.path());
///
///   SeededRandom random; random.between(1, 6);       the same in every run; failures say the seed
#include "tests/support/allocation_failure.h"
#include "tests/support/debug_log_file.h"
#include "tests/support/rounds.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_by.h"

#endif  // QZLOG_TESTS_SUPPORT_SUPPORT_H
