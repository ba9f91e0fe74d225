#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"
#include "tests/tools/count/counter_bytes.h"
#include "tools/system/file_descriptor.h"

namespace {

using qz_test::read_file;
using qz_test::SetEnv;
using qz_test::UnsetEnv;
using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;
using qzlog_test::counter_bytes;

constexpr const char* kDefinitions = R"yaml(
version: "1.0"
entries:
  - {id: 1001, name: DISK_FULL, message: "full"}
  - {id: 1002, name: LOGIN, message: "login"}
  - {id: 4000000000, name: BIG, message: "big"}
)yaml";

// Out of order, with free records between, as a file gets in time.
const std::string kEvents = counter_bytes({{2026, 11, 21, 1001, 40},
                                           {2026, 11, 18, 1001, 9},
                                           {0, 0, 0, 0, 0},
                                           {2026, 11, 21, 1002, 1207},
                                           {2026, 11, 18, -294967296, 1},
                                           {2026, 10, 31, 1002, 623},
                                           {0, 0, 0, 77, 3},
                                           {2026, 11, 20, 5, 4294967295U},
                                           {2026, 11, 19, 1002, 0}});

class CountShow : public CommandFixture {
 protected:
  CountShow() {
    write("d.yaml", kDefinitions);
    write("events.cnt", kEvents);
  }

  CommandResult show(const std::string& arguments) const { return run("$QZLOG count show " + arguments); }

  UnsetEnv no_columns_{"COLUMNS"};
};

/// QZLOG_REWRITE_GOLDEN=1 writes what the command gives now into the file; look at the difference before keeping it.
void expect_golden(const CommandResult& result, const std::string& name) {
  const std::string path = QZLOG_GOLDEN
                           "/count"
                           "/" +
                           name;
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) std::ofstream(path, std::ios::binary) << result.out;
  EXPECT_EQ(result.out, read_file(path)) << name;
  EXPECT_NE(result.out, "");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(CountShow, Table_WithoutNamesAndWith) {
  expect_golden(show("events.cnt"), "table.txt");
  expect_golden(show("events.cnt --definitions d.yaml"), "table-names.txt");
}

TEST_F(CountShow, Json_WithoutNamesAndWith) {
  expect_golden(show("events.cnt --json"), "counts.json");
  expect_golden(show("events.cnt --json --definitions d.yaml"), "counts-names.json");
}

TEST_F(CountShow, Chart_InDifferentWidths) {
  std::string days;
  for (int day = 1; day <= 16; ++day) days += counter_bytes({2026, 11, day, 1, static_cast<std::uint32_t>(day * day)});
  write("days.cnt", days + kEvents.substr(5 * 32, 32));
  expect_golden(run("COLUMNS=40 $QZLOG count show --chart days.cnt"), "chart-40.txt");
  expect_golden(show("--chart days.cnt"), "chart-80.txt");
  expect_golden(run("COLUMNS=120 $QZLOG count show --chart days.cnt"), "chart-120.txt");
}

TEST_F(CountShow, ColumnsThatAreNoWidth_AreIgnored) {
  const std::string expected = show("events.cnt --chart").out;
  for (const char* const columns : {"", "0", "-5", "wide", "10001", "4e1"}) {
    const SetEnv variable("COLUMNS", columns);
    EXPECT_EQ(show("events.cnt --chart").out, expected) << columns;
  }
}

TEST_F(CountShow, FromAndTo_AreAnIntervalWithBothEnds) {
  const struct {
    const char* arguments;
    const char* total;
  } cases[] = {
      {"--from 2026-10-31 --to 2026-11-18", "633"},  // across a month's end: no box
      {"--from 2026-11-01 --to 2026-11-18", "10"},
      {"--from 2026-11-21", "1247"},
      {"--to 2026-10-31", "623"},
      {"--from 2026-11-21 --to 2026-11-21", "1247"},
      {"--from 2026-11-22", "0"},
      {"--from 0001-01-01 --to 9999-12-31", "4294969175"},
  };
  for (const auto& row : cases) {
    const CommandResult result = show(std::string("events.cnt --json ") + row.arguments);
    EXPECT_NE(result.out.find("\n  \"total\": " + std::string(row.total) + ",\n"), std::string::npos)
        << row.arguments << result.out;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
}

TEST_F(CountShow, CompiledFileWithNames_ShowsThem) {
  ASSERT_EQ(run("$QZLOG compile d.yaml -o d.ldf").status, 0);
  expect_golden(show("events.cnt --definitions d.ldf"), "table-names.txt");
  expect_golden(show("events.cnt --json --definitions d.ldf"), "counts-names.json");
}

TEST_F(CountShow, NoCounts_TotalIsZero) {
  write("empty.cnt", "");
  EXPECT_EQ(show("empty.cnt").out, "day    key  count\ntotal           0\n");
  EXPECT_EQ(show("empty.cnt --json").out,
            "{\n  \"qzlog\": 1,\n  \"findings\": [],\n  \"counts\": [],\n  \"days\": [],\n  \"keys\": [],\n  "
            "\"total\": 0,\n  \"damaged\": 0\n}\n");
  EXPECT_EQ(show("empty.cnt --chart").out, "");
  EXPECT_EQ(show("empty.cnt --chart").status, 0);
}

TEST_F(CountShow, EveryFormOfTheName_IsUnderstood) {
  const std::string expected = show("events.cnt").out;
  ASSERT_NE(expected, "");
  EXPECT_EQ(show("events").out, expected);
  EXPECT_EQ(show("./events").out, expected);
  EXPECT_EQ(show("- <events.cnt").out, expected);
  EXPECT_EQ(run("cat events.cnt | $QZLOG count show /dev/stdin").out, expected);
  EXPECT_EQ(run("cat events.cnt | $QZLOG count show /dev/fd/7 7<&0").out, expected);
  EXPECT_EQ(run("cp events.cnt saved; $QZLOG count show saved").out, expected);
  EXPECT_EQ(run("mkdir events; $QZLOG count show events").out, expected);
}

TEST_F(CountShow, Damage_IsReportedRecordByRecordAndTheFileStaysAsItIs) {
  const std::string damaged =
      counter_bytes({{2026, 11, 21, 7, 1}, {2026, 11, 21, 7, 2}, {2026, 2, 30, 7, 3}, {2026, 11, 22, 7, 4, 16}}) +
      counter_bytes({2026, 11, 23, 7, 5}).substr(0, 31);
  write("bad.cnt", damaged);
  ASSERT_EQ(run("chmod 400 bad.cnt; touch -d 2026-01-01 bad.cnt").status, 0);
  const CommandResult result = show("bad.cnt --from 2026-11-21");
  EXPECT_EQ(result.out,
            "day           key  count\n"
            "2026-11-21      7      1\n"
            "2026-11-21  total      1\n"
            "total           7      1\n"
            "total                  1\n");
  EXPECT_EQ(
      result.err,
      "bad.cnt: offset 64: error: there is no such date (2026-2-30, key 7, count 3) [impossible-date]\n"
      "bad.cnt: offset 96: error: the size field is 16 instead of 32 (2026-11-22, key 7, count 4) "
      "[record-size]\n"
      "bad.cnt: offset 32: error: the record at offset 0 has the same day and key (2026-11-21, key 7, count 2) "
      "[duplicate-record]\n"
      "bad.cnt: offset 128: error: the file ends after 31 of the 32 bytes [partial-record]\n"
      "qzlog: error: 4 records passed over (1 impossible-date, 1 record-size, 1 duplicate-record, 1 partial-record); "
      "the first at bad.cnt, offset 64\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(read("bad.cnt"), damaged);
  EXPECT_EQ(run("find bad.cnt -newermt 2026-01-02").out, "");
  const CommandResult json = show("bad.cnt --json");
  EXPECT_NE(json.out.find("\n  \"damaged\": 4\n"), std::string::npos) << json.out;
  EXPECT_NE(json.out.find(R"x(    {"file":"bad.cnt","offset":64,"severity":"error","rule":"impossible-date",)x"
                          R"x("text":"there is no such date (2026-2-30, key 7, count 3)"},)x"),
            std::string::npos)
      << json.out;
  EXPECT_EQ(json.err, result.err);
  EXPECT_EQ(json.status, 1);
  EXPECT_TRUE(show("- --chart <bad.cnt").err.starts_with("<stdin>: offset 64: error: "));
}

TEST_F(CountShow, WhatIsNoRegularFile_IsRefused) {
  ASSERT_EQ(run("mkfifo pipe.cnt; ln -s /dev/zero endless; mkdir folder.cnt").status, 0);
  for (const std::string name : {"pipe.cnt", "endless", "folder.cnt"}) {
    const CommandResult result = run("timeout 5 $QZLOG count show " + name);
    EXPECT_EQ(result.out, "") << name;
    EXPECT_EQ(result.err, "qzlog: error: cannot open '" + name + "': not a regular file\n");
    EXPECT_EQ(result.status, 2) << name;
  }
}

TEST_F(CountShow, WrongUse_IsExplainedWithStatus2) {
  ASSERT_EQ(run("$QZLOG compile d.yaml -o d.ldf --strip").status, 0);
  const std::string usage = "\nRun 'qzlog --help' or 'qzlog COMMAND --help' for the usage.\n";
  const struct {
    const char* arguments;
    std::string text;
  } cases[] = {
      {"", "FILE is required" + usage},
      {"events.cnt --from 2026-11-31", "--from: '2026-11-31' is no date from 0001-01-01 to 9999-12-31" + usage},
      {"events.cnt --to ''", "--to: '' is no date from 0001-01-01 to 9999-12-31" + usage},
      {"events.cnt --json --chart", "--json excludes --chart" + usage},
      {"events.cnt --definitions ''", "--definitions: the name is empty" + usage},
      {"events.cnt other.cnt", "The following argument was not expected: other.cnt" + usage},
      {"events.cnt --from 2026-11-22 --to 2026-11-21", "--from 2026-11-22 is later than --to 2026-11-21\n"},
      {"- --definitions - <d.yaml", "standard input can be read for one file only\n"},
      {"none", "cannot open 'none.cnt': No such file or directory\n"},
      {"none.cnt", "cannot open 'none.cnt': No such file or directory\n"},
      {"none/", "'none/' names no counter; it is given as DIR/NAME\n"},
      {"events.cnt --definitions none.yaml", "cannot open 'none.yaml': No such file or directory\n"},
      {"events.cnt --definitions d.ldf", "'d.ldf' has no names; give its source\n"},
  };
  for (const auto& row : cases) {
    const CommandResult result = show(row.arguments);
    EXPECT_EQ(result.out, "") << row.arguments;
    EXPECT_EQ(result.err, "qzlog: error: " + row.text) << row.arguments;
    EXPECT_EQ(result.status, 2) << row.arguments;
  }
}

TEST_F(CountShow, WrongDefinitions_ShowTheCompilersDiagnostics) {
  write("wrong.yaml", "version: \"1.0\"\nentries: [{id: 1, name: a, message: x}]\n");
  const CommandResult result = show("events.cnt --definitions wrong.yaml");
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "wrong.yaml:2:25: error: bad entry name 'a' [bad-entry-name]\n"
            "    2 | entries: [{id: 1, name: a, message: x}]\n"
            "      |                         ^\n"
            "  hint: a name begins with A-Z and goes on with A-Z, 0-9 and _\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(CountShow, FullDevice_IsAnErrorWithStatus2) {
  const CommandResult result = show("events.cnt >/dev/full");
  EXPECT_EQ(result.err, "qzlog: error: cannot write to standard output: No space left on device\n");
  EXPECT_EQ(result.status, 2);
}

// What a terminal of so many columns shows.
std::string on_a_terminal(unsigned short columns, const std::string& file) {
  int controller = -1;
  int terminal = -1;
  const winsize size = {24, columns, 0, 0};
  if (::openpty(&controller, &terminal, nullptr, nullptr, &size) != 0) std::abort();
  const qzlog_tool::FileDescriptor controlling(controller);
  const pid_t process = ::fork();
  if (process == 0) {
    ::dup2(terminal, STDOUT_FILENO);
    ::execl(QZLOG_COMMAND, "qzlog", "count", "show", "--chart", file.c_str(), nullptr);
    ::_exit(127);
  }
  ::waitpid(process, nullptr, 0);
  char buffer[4096];
  const std::size_t count = qzlog_tool::read_some(controller, buffer, sizeof buffer, "the terminal");
  ::close(terminal);
  return {buffer, count};
}

TEST_F(CountShow, ChartOnATerminal_HasItsWidth) {
  const std::string file = folder_.write("day.cnt", counter_bytes({2026, 11, 21, 1, 5}));
  EXPECT_EQ(on_a_terminal(20, file), "2026-11-21  5 ██████\r\n");
  EXPECT_EQ(on_a_terminal(24, file), "2026-11-21  5 ██████████\r\n");
  const SetEnv columns("COLUMNS", "16");
  EXPECT_EQ(on_a_terminal(24, file), "2026-11-21  5 ██\r\n");
}

}  // namespace
