#include "tools/choice/entry_choice.h"

#include <cstdint>
#include <string>
#include <vector>

#include "tests/tools/choice/choice_fixture.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_tool::ChoiceOptions;
using qzlog_tool::CommandError;
using qzlog_tool::EntryChoice;

class EntryChoiceTest : public qz_test::ChoiceTest {
 protected:
  /// The numbers of the lines that are taken; twice, without and with the choice by bytes.
  std::vector<int> taken(const ChoiceOptions& options) {
    std::vector<int> by_entries = taken(options, false);
    EXPECT_EQ(taken(options, true), by_entries);
    return by_entries;
  }

  std::vector<int> taken(const ChoiceOptions& options, bool on_bytes) {
    EntryChoice choice(options, known_, qzlog_tool::process_clock(qz_test::kNow));
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(lines_.data(), lines_.size());
    if (on_bytes) reader.SetLineChoice(choice.line_choice());
    std::vector<int> numbers;
    while (!choice.is_complete() && reader.Next(line_)) {
      if (choice.takes(line_)) numbers.push_back(static_cast<int>(line_.GetLine()));
    }
    EXPECT_EQ(reader.GetErrorCount(), 0u);
    without_time_ = choice.without_time();
    return numbers;
  }

  std::string refusal(const ChoiceOptions& options) {
    try {
      EntryChoice choice(options, known_, qzlog_tool::process_clock(qz_test::kNow));
      return "";
    } catch (const CommandError& error) {
      EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
      return error.what();
    }
  }

  std::string lines_ =
      R"({"id":1,"level":3,"time":"2026-11-20T08:15:30Z","attributes":{"Free":1}}
{"id":2,"level":5,"time":"2026-11-21T08:15:29Z","attributes":{"Free":2}}
{"id":3,"level":9,"time":"2026-11-21T08:15:30Z","attributes":{"Reason":3}}
{"id":1,"level":0,"attributes":{"Free":4}}
{"writer":"alpha/1/x","seq":1,"id":1,"level":5,"time":"2026-11-21T08:15:31Z","attributes":{"Free":5}}
{"writer":"alpha/1/x","seq":1,"id":1,"level":5,"time":"2026-11-21T08:15:31Z","attributes":{"Free":5}}
{"writer":"beta/2/x","seq":1,"id":2,"level":5,"time":"2026-11-22T08:15:31Z","attributes":{"Free":6}}
)";
  std::uint64_t without_time_ = 0;
};

using Numbers = std::vector<int>;

TEST_F(EntryChoiceTest, NoOption_TakesAll) {
  EXPECT_FALSE(ChoiceOptions().is_given());
  EXPECT_EQ(taken({}), (Numbers{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(EntryChoice({}, known_, qzlog_tool::process_clock(qz_test::kNow)).line_choice(), nullptr);
}

TEST_F(EntryChoiceTest, SinceAndUntil_IncludeTheirSecondAndLeaveOutWhatHasNoTime) {
  EXPECT_EQ(taken({.since = "2026-11-21T08:15:30Z"}), (Numbers{3, 5, 6, 7}));
  EXPECT_EQ(without_time_, 1u);
  EXPECT_EQ(taken({.until = "2026-11-21T08:15:30Z"}), (Numbers{1, 2, 3}));
  EXPECT_EQ(taken({.since = "2026-11-21T08:15:30Z", .until = "now"}), Numbers{3});
  EXPECT_EQ(taken({.since = "-1s"}), (Numbers{2, 3, 5, 6, 7}));
  EXPECT_EQ(taken({.since = "yesterday", .until = "today"}), Numbers{1});
  EXPECT_EQ(without_time_, 1u);
  EXPECT_EQ(taken({.since = "now", .where = "Free = 5"}), (Numbers{5, 6}));
  EXPECT_EQ(without_time_, 0u);
  EXPECT_EQ(taken({.since = "now", .where = "Free >= 4"}), (Numbers{5, 6, 7}));
  EXPECT_EQ(without_time_, 1u);
}

TEST_F(EntryChoiceTest, IdsNamesLevelsMasksAndWriters_AreTaken) {
  EXPECT_EQ(taken({.ids = {"2", "0x3..10"}}), (Numbers{2, 3, 7}));
  EXPECT_EQ(taken({.ids = {"2,3"}}), (Numbers{2, 3, 7}));
  EXPECT_EQ(taken({.ids = {"7.."}}), Numbers{});
  EXPECT_EQ(taken({.names = {"DISK_*"}}), (Numbers{1, 2, 4, 5, 6, 7}));
  EXPECT_EQ(taken({.names = {"LINK_DOWN", "DISK_O?"}}), (Numbers{2, 3, 7}));
  EXPECT_EQ(taken({.level = "5.."}), (Numbers{2, 3, 5, 6, 7}));
  EXPECT_EQ(taken({.level = "..3"}), (Numbers{1, 4}));
  EXPECT_EQ(taken({.level = "5"}), (Numbers{2, 5, 6, 7}));
  EXPECT_EQ(taken({.mask = "0xC"}), (Numbers{2, 3, 7}));
  EXPECT_EQ(taken({.mask = "0"}), Numbers{});
  EXPECT_EQ(taken({.writers = {"alpha/*"}}), (Numbers{5, 6}));
  EXPECT_EQ(taken({.writers = {"*"}}), (Numbers{5, 6, 7}));
  EXPECT_EQ(taken({.ids = {"1"}, .level = "3..", .where = "Free > 1"}), (Numbers{5, 6}));
}

TEST_F(EntryChoiceTest, Head_EndsTheReading) {
  EXPECT_EQ(taken({.ids = {"1"}, .head = 2}), (Numbers{1, 4}));
  EXPECT_EQ(taken({.head = 100}), (Numbers{1, 2, 3, 4, 5, 6, 7}));
  EntryChoice choice({.head = 1}, known_, qzlog_tool::process_clock(qz_test::kNow));
  EXPECT_FALSE(choice.is_complete());
  EXPECT_TRUE(choice.takes(line(R"({"id":1})")));
  EXPECT_TRUE(choice.is_complete());
  EXPECT_FALSE(choice.takes(line(R"({"id":1})")));
}

TEST_F(EntryChoiceTest, Unique_LeavesOutWhatWasThere) {
  EXPECT_EQ(taken({.unique = true}), (Numbers{1, 2, 3, 4, 5, 7}));
  EXPECT_EQ(taken({.ids = {"1"}, .head = 4, .unique = true}), (Numbers{1, 4, 5}));
}

TEST_F(EntryChoiceTest, Losses_AreTakenWhereAnEntryThatIsWantedMayBeAmongThem) {
  lines_ =
      R"({"writer":"alpha/1/x","seq":1,"written":"2026-11-21T08:15:30.5Z","lost":[{"id":1,"level":3,"count":5},{"id":3,"level":9,"count":1}]}
)";
  const Numbers all = {1};
  EXPECT_EQ(taken({}), all);
  EXPECT_EQ(taken({.ids = {"3"}}), all);
  EXPECT_EQ(taken({.ids = {"2"}}), Numbers{});
  EXPECT_EQ(taken({.ids = {"3"}, .level = "..8"}), Numbers{});
  EXPECT_EQ(taken({.names = {"LINK_DOWN"}}), all);
  EXPECT_EQ(taken({.names = {"DISK_OK"}}), Numbers{});
  EXPECT_EQ(taken({.mask = "8"}), all);
  EXPECT_EQ(taken({.mask = "2"}), Numbers{});
  EXPECT_EQ(taken({.writers = {"alpha/*"}}), all);
  EXPECT_EQ(taken({.writers = {"beta/*"}}), Numbers{});
  EXPECT_EQ(taken({.since = "now"}), all);
  EXPECT_EQ(taken({.since = "2026-11-21T08:15:31Z"}), Numbers{});
  EXPECT_EQ(taken({.until = "2026-11-20"}), all);
  EXPECT_EQ(taken({.where = "Free = 1"}), all);
}

TEST_F(EntryChoiceTest, LossesThatBeganBehindUntil_AreNotTaken) {
  lines_ = R"({"written":"2026-11-21T09:00:00Z","lost":[{"id":1,"level":3,"count":5,"since":"2026-11-21T08:15:30Z"}]}
{"written":"2026-11-21T09:00:00Z","lost":[{"id":1,"level":3,"count":5}]}
)";
  EXPECT_EQ(taken({.until = "2026-11-21T08:15:29Z"}), Numbers{2});
  EXPECT_EQ(taken({.until = "2026-11-21T08:15:30Z"}), (Numbers{1, 2}));
  EXPECT_EQ(taken({.since = "2026-11-21T09:00:00Z"}), (Numbers{1, 2}));
}

TEST_F(EntryChoiceTest, BoundsOfLosses_AreNotAskedOfEntries) {
  lines_ = R"({"lost":[{"id":1,"level":3,"count":5}]}
{"id":1,"level":3}
)";
  EXPECT_EQ(taken({.losses = {{.mask = 1}}}), (Numbers{1, 2}));
  EXPECT_EQ(taken({.losses = {{.mask = 6}}}), Numbers{2});
  EXPECT_EQ(taken({.losses = {{.levels = {4, 9}}}}), Numbers{2});
}

TEST_F(EntryChoiceTest, LostEntries_AreTakenOneByOne) {
  const EntryChoice choice({.until = "now", .ids = {"1"}, .level = "3.."}, known_,
                           qzlog_tool::process_clock(qz_test::kNow));
  EXPECT_TRUE(choice.takes_lost({1, 3, 5, ""}));
  EXPECT_FALSE(choice.takes_lost({2, 3, 5, ""}));
  EXPECT_FALSE(choice.takes_lost({1, 2, 5, ""}));
  EXPECT_TRUE(choice.takes_lost({1, 3, 5, "2026-11-21T08:15:30Z"}));
  EXPECT_FALSE(choice.takes_lost({1, 3, 5, "2026-11-21T08:15:31Z"}));
}

TEST_F(EntryChoiceTest, WhatWasHeldBack_IsTakenAsLossesAre) {
  lines_ = R"({"writer":"alpha/1/x","seq":1,"held":[{"id":1,"level":3,"count":5}]})"
           "\n";
  EXPECT_EQ(taken({.ids = {"1"}}), Numbers{1});
  EXPECT_EQ(taken({.ids = {"2"}}), Numbers{});
  EXPECT_EQ(taken({.level = "4.."}), Numbers{});
  EXPECT_EQ(taken({.where = "Free = 1"}), Numbers{1});
}

TEST_F(EntryChoiceTest, WhatTheDefinitionsDoNotKnow_IsRefusedWithASuggestion) {
  EXPECT_EQ(refusal({.ids = {"1..9,4"}}), "--id: the definitions have no entry 4; IDs are from 1 to 3");
  EXPECT_EQ(refusal({.ids = {"7..9"}}), "");
  qzlog_compiler::DefinitionModel model;
  model.entries.resize(1);
  model.entries[0].id = 1001;
  model.entries[0].name = "FAR";
  known_.add(model);
  EXPECT_EQ(refusal({.ids = {"0x3F3"}}),
            "--id: the definitions have no entry 1011; did you mean '1001'? IDs are from 1 to 1001");
  EXPECT_EQ(refusal({.names = {"DISK_FUL"}}),
            "--name: the definitions have no event 'DISK_FUL'; did you mean 'DISK_FULL'?");
  EXPECT_EQ(refusal({.names = {"X*"}}), "--name: the definitions have no event 'X*'");
  testing::internal::CaptureStderr();
  EXPECT_EQ(refusal({.where = "Fre = 1"}), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "--where:1:1: error: the definitions have no attribute 'Fre' [undefined-attribute]\n    1 | Fre = 1\n"
            "      | ^\n  hint: did you mean 'Free'?\n");
}

TEST_F(EntryChoiceTest, WithoutNamesInTheDefinitions_ThoseOfLinesCount) {
  load_without_names();
  lines_ =
      "{\"id\":1,\"level\":0,\"name\":\"OWN\",\"attributes\":{}}\n{\"id\":1}\n{\"id\":1,\"level\":0,\"attributes\":{},"
      "\"name\":\"OWN2\"}\n";
  EXPECT_EQ(taken({.names = {"OWN*"}}), (Numbers{1, 3}));
  EXPECT_EQ(taken({.names = {"*"}}), (Numbers{1, 3}));
  EXPECT_EQ(taken({.names = {"OTHER"}}), Numbers{});
}

}  // namespace
