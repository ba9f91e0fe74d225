#include <gtest/gtest.h>

#include <string>

#include "tests/tools/command_fixture.h"
#include "tests/tools/count/counter_bytes.h"

namespace {

using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;
using qzlog_test::counter_bytes;

class CountChange : public CommandFixture {
 protected:
  CommandResult count(const std::string& arguments) const { return run("$QZLOG count " + arguments); }

  void expect_done(const std::string& arguments) const {
    const CommandResult result = count(arguments);
    EXPECT_EQ(result.out, "") << arguments;
    EXPECT_EQ(result.err, "") << arguments;
    EXPECT_EQ(result.status, 0) << arguments;
  }
  std::string events() const { return read("events.cnt"); }
};

TEST_F(CountChange, Add_MakesTheFileAndCounts) {
  expect_done("add events --date 2026-11-21 --key 7");
  EXPECT_EQ(events(), counter_bytes({2026, 11, 21, 7, 1}));
  expect_done("add events.cnt --key 7 --date 2026-11-21");
  expect_done("add ./events --key 7 --date 2026-11-22");
  EXPECT_EQ(events(), counter_bytes({{2026, 11, 21, 7, 2}, {2026, 11, 22, 7, 1}}));
}

TEST_F(CountChange, AddWithoutDate_CountsToday) {
  const CommandResult result =
      run("date +%F >before; $QZLOG count add events --key 1; date +%F >after; $QZLOG count show events | sed -n 2p");
  const auto line = [&](const std::string& file) { return read(file).substr(0, 10) + "      1      1\n"; };
  EXPECT_TRUE(result.out == line("before") || result.out == line("after")) << result.out;
}

TEST_F(CountChange, Keys_AreNumbersOfEitherSignOrNames) {
  write("d.yaml", "version: \"1.0\"\nentries:\n  - {id: 4000000000, name: BIG, message: x}\n");
  const std::string day = " --date 2026-11-21";
  expect_done("add events --key -294967296" + day);
  expect_done("add events --key=-294967296" + day);
  expect_done("add events --key 4000000000" + day);
  expect_done("add events --key 0xEE6B2800" + day);
  expect_done("add events --key BIG --definitions d.yaml" + day);
  EXPECT_EQ(events(), counter_bytes({2026, 11, 21, -294967296, 5}));
}

TEST_F(CountChange, Set_ReplacesOrAdds) {
  expect_done("set events --date 2026-11-21 --key 7 --count 12");
  expect_done("set events --date 2026-11-21 --key 7 --count 4294967295");
  expect_done("set events --date 2026-11-21 --key 8 --count 0");
  EXPECT_EQ(events(), counter_bytes({{2026, 11, 21, 7, 4294967295U}, {2026, 11, 21, 8, 0}}));
}

TEST_F(CountChange, Delete_FreesOneRecordThatIsUsedAgain) {
  write("events.cnt", counter_bytes({{2026, 11, 21, 7, 1}, {2026, 11, 21, 8, 2}}));
  expect_done("delete events --date 2026-11-21 --key 7");
  expect_done("delete events --date 2026-11-21 --key 9");
  EXPECT_EQ(events(), counter_bytes({{0, 0, 0, 0, 0}, {2026, 11, 21, 8, 2}}));
  expect_done("add events --date 2027-01-01 --key 3");
  EXPECT_EQ(events(), counter_bytes({{2027, 1, 1, 3, 1}, {2026, 11, 21, 8, 2}}));
}

TEST_F(CountChange, DeleteFromTo_IsABoxOverYearMonthAndDay) {
  const std::string all = counter_bytes(
      {{2026, 1, 9, 7, 1}, {2026, 1, 10, 7, 2}, {2026, 2, 15, 8, 3}, {2026, 2, 25, 7, 4}, {2026, 3, 20, 7, 5}});
  write("events.cnt", all);
  expect_done("delete events --from 2026-01-10 --to 2026-03-20");
  EXPECT_EQ(
      events(),
      counter_bytes({{2026, 1, 9, 7, 1}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {2026, 2, 25, 7, 4}, {0, 0, 0, 0, 0}}));
}

TEST_F(CountChange, WrongUse_IsExplainedWithStatus2AndChangesNothing) {
  write("d.yaml", "version: \"1.0\"\nentries:\n  - {id: 1, name: ONE, message: x}\n");
  const std::string content = counter_bytes({2026, 11, 21, 7, 1});
  write("events.cnt", content);
  const std::string usage = "\nRun 'qzlog --help' or 'qzlog COMMAND --help' for the usage.\n";
  const struct {
    const char* arguments;
    std::string text;
  } cases[] = {
      {"", "A subcommand is required" + usage},
      {"sum events", "'sum' was not expected" + usage},
      {"add events", "--key is required" + usage},
      {"add events --key 1 --date 2026-11-31", "--date: '2026-11-31' is no date from 0001-01-01 to 9999-12-31" + usage},
      {"add events --key 4294967296", "'4294967296' is no key from -2147483648 to 4294967295\n"},
      {"add events --key -2147483649", "'-2147483649' is no key from -2147483648 to 4294967295\n"},
      {"add events --key 7a", "'7a' is no key from -2147483648 to 4294967295\n"},
      {"add events --key ONE", "the name 'ONE' needs --definitions\n"},
      {"add events --key TWO --definitions d.yaml", "'d.yaml' has no entry 'TWO'\n"},
      {"add events --key OEN --definitions d.yaml", "'d.yaml' has no entry 'OEN'; did you mean 'ONE'?\n"},
      {"delete events --interval", "--interval requires --from" + usage},
      {"add events --key ONE --definitions none.yaml", "cannot open 'none.yaml': No such file or directory\n"},
      {"add none/events --key 1", "cannot open 'none/events.cnt' for writing: No such file or directory\n"},
      {"set events --key 7 --count 5", "--date is required" + usage},
      {"set events --key 7 --date 2026-11-21", "--count is required" + usage},
      {"set events --key 7 --date 2026-11-21 --count -1", "--count: '-1' is no number from 0 to 4294967295" + usage},
      {"delete events", "give --date and --key, or --from and --to, to say what is deleted\n"},
      {"delete events --date 2026-11-21", "--date requires --key" + usage},
      {"delete events --key 7", "--key requires --date" + usage},
      {"delete events --from 2026-11-21", "--from requires --to" + usage},
      {"delete events --to 2026-11-21", "--to requires --from" + usage},
      {"delete events --from 2026-11-22 --to 2026-11-21", "--from 2026-11-22 is later than --to 2026-11-21\n"},
      {"delete none --date 2026-11-21 --key 7", "cannot open 'none.cnt' for writing: No such file or directory\n"},
      {"delete none --from 2026-11-21 --to 2026-11-21",
       "cannot open 'none.cnt' for writing: No such file or directory\n"},
  };
  for (const auto& row : cases) {
    const CommandResult result = count(row.arguments);
    EXPECT_EQ(result.out, "") << row.arguments;
    EXPECT_EQ(result.err, "qzlog: error: " + row.text) << row.arguments;
    EXPECT_EQ(result.status, 2) << row.arguments;
  }
  EXPECT_EQ(events(), content);
}

TEST_F(CountChange, BoxWithoutADay_IsAWarningAndTheIntervalIsDeleted) {
  const std::string content =
      counter_bytes({{2025, 12, 24, 7, 1}, {2025, 12, 25, 7, 2}, {2026, 1, 5, 8, 3}, {2026, 1, 6, 7, 4}});
  write("events.cnt", content);
  const std::string days = "delete events --from 2025-12-25 --to 2026-01-05";
  const CommandResult box = count(days);
  EXPECT_EQ(box.err,
            "qzlog: warning: nothing is deleted in 'events.cnt': no day has its year, month and day each between those "
            "of --from 2025-12-25 and --to 2026-01-05; --interval deletes the days from one to the other\n");
  EXPECT_EQ(box.status, 0);
  EXPECT_EQ(events(), content);
  const CommandResult interval = count(days + " --interval");
  EXPECT_EQ(interval.err, "");
  EXPECT_EQ(interval.status, 0);
  EXPECT_EQ(count("show events --json | grep '\"day\".*key'").out,
            "    {\"day\": \"2025-12-24\", \"key\": 7, \"count\": 1},\n"
            "    {\"day\": \"2026-01-06\", \"key\": 7, \"count\": 4}\n");
}

TEST_F(CountChange, DamagedRecords_AreToldByWhatChangesOthers) {
  write("events.cnt", counter_bytes({{2026, 11, 21, 7, 1}, {2026, 2, 30, 7, 3}}));
  const std::string told =
      "qzlog: error: 1 record passed over (1 impossible-date); the first at events.cnt, offset 32\n";
  for (const char* const change :
       {"add events --date 2026-11-21 --key 7", "set events --date 2026-11-21 --key 7 --count 2",
        "delete events --date 2026-11-20 --key 7"}) {
    const CommandResult result = count(change);
    EXPECT_EQ(result.err, told) << change;
    EXPECT_EQ(result.status, 1) << change;
  }
  const CommandResult quiet = count("add events --date 2026-11-21 --key 7 --quiet");
  EXPECT_EQ(quiet.err, "");
  EXPECT_EQ(quiet.status, 1);
}

TEST_F(CountChange, BoxAndSingleDayTogether_AreRefused) {
  write("events.cnt", counter_bytes({2026, 11, 21, 7, 1}));
  const CommandResult result = count("delete events --date 2026-11-21 --key 7 --from 2026-11-21 --to 2026-11-21");
  EXPECT_NE(result.err.find("excludes"), std::string::npos) << result.err;
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(events(), counter_bytes({2026, 11, 21, 7, 1}));
}

TEST_F(CountChange, HelpOfEverySubcommand_ShowsExamples) {
  for (const std::string command : {"show", "add", "set", "delete"}) {
    const CommandResult result = count(command + " --help");
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_NE(result.out.find(":\n  qzlog count " + command + " "), std::string::npos) << result.out;
    EXPECT_EQ(result.err, "") << command;
  }
  EXPECT_NE(count("delete --help").out.find("That is a box and no interval"), std::string::npos);
}

}  // namespace
