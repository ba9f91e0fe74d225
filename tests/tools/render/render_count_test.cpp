#include <gtest/gtest.h>

#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"
#include "tests/tools/count/counter_bytes.h"
#include "tests/tools/shown_line.h"

namespace {

using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;
using qzlog_test::counter_bytes;
using qzlog_test::shown_line;

constexpr const char* kDefinitions = R"yaml(
version: "1.0"
globals:
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - {id: 1, name: ONE, message: "one"}
  - {id: 2, name: TWO, message: "two"}
  - {id: 4294967295, name: LAST, message: "last"}
)yaml";

std::string entry(const std::string& id, const std::string& time) {
  return "{\"id\":" + id + ",\"time\":\"" + time + "\"}\n";
}

class RenderCount : public CommandFixture {
 protected:
  RenderCount() { write("d.yaml", kDefinitions); }

  CommandResult render(const std::string& entries, const std::string& counter, const std::string& options = "") const {
    write("e.jsonl", entries);
    return run("$QZLOG render --definitions d.yaml " + options + " --count " + counter + " e.jsonl");
  }
};

void expect_success(const CommandResult& result, const std::string& out) {
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderCount, LocalMidnight_DividesTheDays) {
  const struct {
    const char* zone;
    const char* before;  // the last second of 2026-11-21 there
    const char* after;
  } cases[] = {
      {"Asia/Kathmandu", "2026-11-21T18:14:59Z", "2026-11-21T18:15:00Z"},
      {"America/St_Johns", "2026-11-22T03:29:59Z", "2026-11-22T03:30:00Z"},
      {"Australia/Lord_Howe", "2026-11-21T12:59:59Z", "2026-11-21T13:00:00Z"},
      {"Pacific/Kiritimati", "2026-11-21T09:59:59+00:00", "2026-11-20T22:00:00-12:00"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.zone);
    const qz_test::SetEnv zone("TZ", row.zone);
    write("events.cnt", "");
    expect_success(render(entry("1", row.before) + entry("1", row.after) + entry("1", row.after), "events"),
                   "one\none\none\n");
    EXPECT_EQ(read("events.cnt"), counter_bytes({{2026, 11, 21, 1, 1}, {2026, 11, 22, 1, 2}}));
  }
}

TEST_F(RenderCount, TwoDaysAlternatelyUnderOneId_AreCountedApart) {
  std::string entries;
  std::string wrong;
  for (int round = 0; round < 10; ++round) {
    entries += entry("1", "2026-11-21T00:00:00Z") + entry("1", "2026-11-22T00:00:00Z");
    // Every wrong line sends what was gathered into the file.
    wrong += entry("1", "2026-11-21T00:00:00Z") + "{}\n" + entry("1", "2026-11-22T00:00:00Z") + "{}\n";
  }
  render(entries, "events");
  render(wrong, "events");
  EXPECT_EQ(read("events.cnt"), counter_bytes({{2026, 11, 21, 1, 20}, {2026, 11, 22, 1, 20}}));
}

TEST_F(RenderCount, TwoRuns_AddUp) {
  const std::string entries = entry("1", "2026-11-21T00:00:00Z") + entry("2", "2026-11-21T00:00:00Z");
  expect_success(render(entries, "events"), "one\ntwo\n");
  expect_success(render(entries, "./events.cnt", "--no-icu"), "one\ntwo\n");
  EXPECT_EQ(read("events.cnt"), counter_bytes({{2026, 11, 21, 1, 2}, {2026, 11, 21, 2, 2}}));
}

TEST_F(RenderCount, TwoRunsAtTheSameTime_LoseNothing) {
  std::string entries;
  for (int round = 0; round < 3000; ++round) {
    entries += entry(round % 2 == 0 ? "1" : "2", "2026-11-21T00:00:00Z") + entry("1", "2026-11-22T00:00:00Z");
  }
  write("e.jsonl", entries);
  const std::string command = "$QZLOG render --definitions d.yaml --count events e.jsonl >/dev/null & ";
  expect_success(run(command + command + command + "wait"), "");
  const CommandResult shown = run("$QZLOG count show events --json");
  EXPECT_EQ(shown.err, "");
  EXPECT_NE(shown.out.find(R"("keys": [
    {"key": 1, "count": 13500},
    {"key": 2, "count": 4500}
  ],
  "total": 18000,)"),
            std::string::npos)
      << shown.out;
}

TEST_F(RenderCount, EntryWithoutTime_CountsToday) {
  write("e.jsonl", "{\"id\":1}\n");
  const qz_test::SetEnv zone("TZ", "Pacific/Kiritimati");
  const CommandResult result =
      run("date +%F >before; $QZLOG render --definitions d.yaml --count events e.jsonl; date +%F >after; "
          "$QZLOG count show events --json | grep '\"day\"' | head -1");
  const auto line = [&](const std::string& file) {
    return "one\n    {\"day\": \"" + read(file).substr(0, 10) + "\", \"key\": 1, \"count\": 1}\n";
  };
  EXPECT_TRUE(result.out == line("before") || result.out == line("after")) << result.out;
}

TEST_F(RenderCount, TheZeroTime_IsATimeToo) {
  const qz_test::SetEnv zone("TZ", "UTC");
  expect_success(render(entry("1", "1970-01-01T00:00:00Z"), "events"), "one\n");
  EXPECT_EQ(read("events.cnt"), counter_bytes({1970, 1, 1, 1, 1}));
}

TEST_F(RenderCount, HighEntryId_IsANegativeKey) {
  expect_success(render(entry("4294967295", "2026-11-21T00:00:00Z"), "events"), "last\n");
  EXPECT_EQ(read("events.cnt"), counter_bytes({2026, 11, 21, -1, 1}));
}

TEST_F(RenderCount, OnlyWhatIsRendered_IsCounted) {
  const CommandResult result = render(
      "{\"id\":1,\"level\":3,\"time\":\"2026-11-21T00:00:00Z\"}\n{\"id\":9}\n" + entry("2", "2026-11-21T00:00:00Z"),
      "events", "--level-low 1");
  EXPECT_EQ(result.out, "one\n");
  EXPECT_EQ(read("events.cnt"), counter_bytes({2026, 11, 21, 1, 1}));
}

TEST_F(RenderCount, NothingRendered_LeavesAnEmptyFile) {
  expect_success(render("", "events"), "");
  EXPECT_EQ(read("events.cnt"), "");
  EXPECT_EQ(run("test -f events.cnt").status, 0);
}

TEST_F(RenderCount, DateOutsideTheYears_IsRenderedButNotCounted) {
  const CommandResult result =
      render(entry("1", "9999-12-31T23:00:00Z") + entry("2", "9999-12-31T00:00:00Z"), "events");
  EXPECT_EQ(result.out, "one\ntwo\n");
  EXPECT_EQ(result.err,
            "e.jsonl:1: error: the message is not counted: the local date of 'time' is outside the years 1 to 9999 "
            "[uncountable-date]\n" +
                shown_line(1, R"({"id":1,"time":"9999-12-31T23:00:00Z"})") +
                qzlog_test::one_line_passed_over("uncountable-date", "e.jsonl:1"));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(read("events.cnt"), counter_bytes({9999, 12, 31, 2, 1}));
}

// What a reader has seen is in the file, whatever happens to the command then.
TEST_F(RenderCount, KillAfterAMessage_LosesNoCount) {
  write("e.jsonl", entry("1", "2026-11-21T00:00:00Z") + entry("1", "2026-11-22T00:00:00Z"));
  const CommandResult result =
      run("mkfifo in out; $QZLOG render --definitions d.yaml --count events <in >out & "
          "exec 3>in 4<out; cat e.jsonl >&3; read -r first <&4; read -r second <&4; kill -KILL $!; wait $!; "
          "echo \"$first $second\"");
  EXPECT_EQ(result.out, "one one\n");
  EXPECT_EQ(read("events.cnt"), counter_bytes({{2026, 11, 21, 1, 1}, {2026, 11, 22, 1, 1}}));
}

TEST_F(RenderCount, PieceOfARecordAtTheEnd_IsOverwritten) {
  const std::string whole = counter_bytes({2026, 11, 20, 1, 7});
  write("events.cnt", whole + whole.substr(0, 13));
  const CommandResult result = render(entry("2", "2026-11-21T00:00:00Z"), "events");
  EXPECT_EQ(result.out, "two\n");
  EXPECT_EQ(result.err, "qzlog: error: 1 record passed over (1 partial-record); the first at events.cnt, offset 32\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(read("events.cnt"), whole + counter_bytes({2026, 11, 21, 2, 1}));
}

TEST_F(RenderCount, CounterThatCannotBeWritten_IsRefusedBeforeAnythingIsRendered) {
  const struct {
    const char* counter;
    const char* text;
  } cases[] = {
      {"none/events", "cannot open 'none/events.cnt' for writing: No such file or directory"},
      {"./", "'./' names no counter; it is given as DIR/NAME"},
      {"folder", "cannot open 'folder.cnt' for writing: Is a directory"},
      {"full", "cannot open 'full.cnt' for writing: not a regular file"},
  };
  ASSERT_EQ(run("mkdir folder.cnt; ln -s /dev/full full.cnt").status, 0);
  for (const auto& row : cases) {
    const CommandResult result = render(entry("1", "2026-11-21T00:00:00Z"), row.counter);
    EXPECT_EQ(result.out, "") << row.counter;
    EXPECT_EQ(result.err, std::string("qzlog: error: ") + row.text + "\n");
    EXPECT_EQ(result.status, 2) << row.counter;
  }
}

TEST_F(RenderCount, FileSizeLimit_IsAnErrorAndLeavesWholeRecords) {
  const std::string whole = counter_bytes({2026, 11, 20, 1, 7});
  std::string file;
  for (int record = 0; record < 32; ++record) file += whole;  // as much as the limit allows
  write("events.cnt", file);
  write("e.jsonl", entry("2", "2026-11-21T00:00:00Z"));
  const CommandResult result =
      run("(trap '' XFSZ; ulimit -f 2; $QZLOG render --definitions d.yaml --count events e.jsonl) 2>&1 | cat");
  EXPECT_EQ(result.out,
            "qzlog: error: cannot write to 'events.cnt': File too large\n"
            "qzlog: error: 31 records passed over (31 duplicate-record); the first at events.cnt, offset 32\n");
  EXPECT_EQ(read("events.cnt"), file);
}

TEST_F(RenderCount, EmptyName_IsWrongUsage) {
  const CommandResult result = render("", "''");
  EXPECT_EQ(result.err,
            "qzlog: error: --count: the name is empty\n"
            "Run 'qzlog --help' or 'qzlog COMMAND --help' for the usage.\n");
  EXPECT_EQ(result.status, 2);
}

}  // namespace
