// `qzlog render --follow` with choices, while logs are rotated in every way that there is.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/render/render_follow_fixture.h"

namespace qzlog_test {
namespace {

class RenderFollowChoice : public RenderFollow {
 protected:
  RenderFollowChoice() {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
          "entries:\n  - {id: 1, name: NUMBER, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n"
          "  - {id: 2, name: OTHER, message: \"other {N}\", attributes: [{name: N, type: UInt4}]}\n");
  }

  /// One a minute from 08:00:00, of level 0 to 9 by its last digit, the third of each ten an OTHER.
  static std::string line(int number) {
    char text[160];
    std::snprintf(text, sizeof text,
                  R"({"writer":"h/1/1","seq":%d,"id":%d,"level":%d,"time":"2026-11-21T%02d:%02d:00Z",)"
                  R"("attributes":{"N":%d}})"
                  "\n",
                  number, number % 10 == 3 ? 2 : 1, number % 10, 8 + number / 60, number % 60, number);
    return text;
  }
  static std::string lines(int first, int last) {
    std::string text;
    for (int number = first; number <= last; ++number) text += line(number);
    return text;
  }
  /// Renames a file, which gets its latest lines then, and begins another of its name.
  void rotate(const std::string& name, const std::string& latest, const std::string& first) {
    const std::string former = name + "." + std::to_string(++rotations_);
    rename(name, former);
    append(former, latest);
    append(name, first);
  }

 private:
  int rotations_ = 0;
};

struct Chosen {
  const char* name;
  std::vector<std::string> options;
  bool (*wants)(int number);
};

const Chosen kChosen[] = {
    {"Where", {"--where", "N > 4 and N != 11 and @level >= 1"}, [](int n) { return n > 4 && n != 11 && n % 10 >= 1; }},
    {"Since", {"--since", "2026-11-21T08:07:00Z"}, [](int n) { return n >= 7; }},
    {"Level", {"--level", "5..9"}, [](int n) { return n % 10 >= 5; }},
    {"Name", {"--name", "NUM*", "--id", "1"}, [](int n) { return n % 10 != 3; }},
    {"Writer", {"--writer", "h/*", "--until", "2026-11-21T09:00:00Z"}, [](int n) { return n <= 60; }},
    {"All",
     {"--where", "N < 58", "--level", "2..", "--since", "2026-11-21 08:06:30", "--utc", "--unique"},
     [](int n) { return n < 58 && n % 10 >= 2 && n >= 7; }},
};

class RenderFollowChosen : public RenderFollowChoice, public ::testing::WithParamInterface<Chosen> {
 protected:
  static std::string shown(int first, int last) {
    std::string text;
    for (int number = first; number <= last; ++number) {
      if (GetParam().wants(number)) text += (number % 10 == 3 ? "other " : "") + std::to_string(number) + '\n';
    }
    return text;
  }
  static void expect_shown(Following& following, int first, int last) {
    const std::string wanted = shown(first, last);
    const auto count = static_cast<std::size_t>(std::count(wanted.begin(), wanted.end(), '\n'));
    EXPECT_EQ(following.hear(count), wanted) << first << " to " << last;
  }
  Following follow_chosen(const std::string& operand) const {
    std::vector<std::string> arguments = GetParam().options;
    arguments.push_back(operand);
    return follow(arguments);
  }
  /// A file is not seen where it is renamed twice between two looks, so each is heard of before.
  static constexpr int kRounds = 3;
};

TEST_P(RenderFollowChosen, RenamedFiles_LinesOfAllAreChosen) {
  append("a.jsonl", lines(1, 9));
  Following following = follow_chosen("a.jsonl");
  expect_shown(following, 1, 9);
  for (int first = 10; first < 10 + 15 * kRounds; first += 15) {
    rotate("a.jsonl", lines(first, first + 6), lines(first + 7, first + 14));
    expect_shown(following, first, first + 14);
  }
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(following.hear_rest(), "");
  EXPECT_EQ(read("said"), "");
}

TEST_P(RenderFollowChosen, Series_LinesOfAllItsFilesAreChosen) {
  append("logs/s.20261121.0001", lines(1, 5));
  append("logs/s.20261121.0002", lines(6, 14));
  Following following = follow_chosen("logs/s");
  expect_shown(following, 1, 14);
  append("logs/s.20261121.0002", lines(15, 19));
  append("logs/s.20261121.0003", lines(20, 27));
  append("logs/s.20261122.0001", lines(28, 36));
  expect_shown(following, 15, 36);
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(following.hear_rest(), "");
  EXPECT_EQ(read("said"), "");
}

TEST_P(RenderFollowChosen, FileThatIsCut_LinesBehindTheCutAreChosen) {
  append("a.jsonl", lines(1, 20));
  Following following = follow_chosen("a.jsonl");
  expect_shown(following, 1, 20);
  std::filesystem::resize_file(folder_.path("a.jsonl"), 0);
  following.wait_for_word("shorter");
  append("a.jsonl", lines(21, 29));
  expect_shown(following, 21, 29);
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(following.hear_rest(), "");
}

INSTANTIATE_TEST_SUITE_P(Choices, RenderFollowChosen, ::testing::ValuesIn(kChosen),
                         [](const auto& of) { return std::string(of.param.name); });

TEST_F(RenderFollowChoice, Head_EndsItInWhicheverFileItIsReached) {
  append("a.jsonl", lines(1, 2));
  Following following = follow({"--head", "4", "a.jsonl"});
  EXPECT_EQ(following.hear(2), "1\n2\n");
  rotate("a.jsonl", line(4), lines(5, 9));
  EXPECT_EQ(following.hear_rest(), "4\n5\n");
  EXPECT_EQ(following.wait(), 0);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollowChoice, HeadOfChosenLines_CountsThoseAlone) {
  append("logs/s.20261121.0001", lines(1, 4));
  Following following = follow({"--exit-status", "--head", "2", "--where", "N > 5", "logs"});
  append("logs/s.20261121.0001", lines(5, 6));
  EXPECT_EQ(following.hear(1), "6\n");
  append("logs/s.20261121.0002", lines(1, 4) + lines(7, 9));
  EXPECT_EQ(following.hear_rest(), "7\n");
  EXPECT_EQ(following.wait(), 0);
}

TEST_F(RenderFollowChoice, HeadThatIsThereAlready_EndsItAtOnce) {
  append("a.jsonl", lines(1, 2));
  append("b.jsonl", lines(4, 5));
  Following following = follow({"--head", "1", "a.jsonl", "b.jsonl"});
  EXPECT_EQ(following.hear_rest(), "1\n");
  EXPECT_EQ(following.wait(), 0);
}

TEST_F(RenderFollowChoice, Tail_IsOfWhatIsThereAndWhatComesIsShownAtOnce) {
  append("a.jsonl", lines(1, 12));
  append("b.jsonl", lines(14, 16));
  Following following = follow({"--tail", "5", "--level", "1..", "a.jsonl", "b.jsonl"});
  EXPECT_EQ(following.hear(5), "11\n12\n14\n15\n16\n");
  append("a.jsonl", lines(20, 21));
  EXPECT_EQ(following.hear(1), "21\n");
  rotate("b.jsonl", lines(17, 18), lines(19, 22));
  EXPECT_EQ(following.hear(5), "17\n18\n19\n21\n22\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(following.hear_rest(), "");
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollowChoice, TailOfFewerLines_IsAllOfThem) {
  append("logs/s.20261121.0001", lines(1, 2));
  append("logs/s.20261121.0002", line(4));
  Following following = follow({"--tail", "50", "--output", "csv", "--columns", "line,file,N", "logs/s"});
  EXPECT_EQ(following.hear(4),
            "line,file,N\r\n1,logs/s.20261121.0001,1\r\n2,logs/s.20261121.0001,2\r\n1,logs/s.20261121.0002,4\r\n");
  append("logs/s.20261121.0003", lines(5, 6));
  EXPECT_EQ(following.hear(2), "1,logs/s.20261121.0003,5\r\n2,logs/s.20261121.0003,6\r\n");
}

TEST_F(RenderFollowChoice, TailOfAFileThatIsNotThereYet_IsNothing) {
  Following following = follow({"--tail", "1", "a.jsonl"});
  following.wait_for_word("waiting");
  append("a.jsonl", lines(1, 2));
  EXPECT_EQ(following.hear(2), "1\n2\n");
}

TEST_F(RenderFollowChoice, LinesThatAreCopiedWhereTheFileIsCut_AreShownOnce) {
  append("a.jsonl", lines(1, 2));
  Following following = follow({"--unique", "a.jsonl"});
  EXPECT_EQ(following.hear(2), "1\n2\n");
  rename("a.jsonl", "a.jsonl.1");
  append("a.jsonl", lines(1, 2) + line(4));
  EXPECT_EQ(following.hear(1), "4\n");
}

TEST_F(RenderFollowChoice, WrongLinesAmongUnwantedOnes_AreToldWithTheirPlaces) {
  append("a.jsonl", lines(1, 2) + "{}\n");
  Following following = follow({"--where", "N = 2 or N = 12", "--format", "{file}:{line} {N}", "a.jsonl"});
  EXPECT_EQ(following.hear(1), "a.jsonl:2 2\n");
  EXPECT_NE(following.wait_for_word("missing-id").find("a.jsonl:3: error: "), std::string::npos);
  rotate("a.jsonl", "", lines(10, 12) + "{\"id\":\n");
  EXPECT_EQ(following.hear(1), "a.jsonl:3 12\n");
  EXPECT_NE(following.wait_for_word("bad-json").find("a.jsonl:4:7: error: "), std::string::npos);
}

TEST_F(RenderFollowChoice, SeveralDefinitions_AreTakenForLinesOfAllFiles) {
  write("e.yaml",
        "version: \"2.0\"\nglobals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n"
        "  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
        "entries:\n  - {id: 1, name: NUMBER, message: \"new {N}\", attributes: [{name: N, type: UInt2}]}\n");
  ASSERT_EQ(run("$QZLOG compile --strip e.yaml -o e.ldf").status, 0);
  const std::string digest = run("sha256sum <e.ldf | cut -c1-16 | tr -d '\\n'").out;
  const auto of_e = [&digest](int number) { return R"({"definitions":")" + digest + "\"," + line(number).substr(1); };
  append("a.jsonl", line(1) + of_e(2));
  Following following = follow({"--definitions", "e.ldf", "--level", "1..8", "a.jsonl"});
  EXPECT_EQ(following.hear(2), "1\nnew 2\n");
  rotate("a.jsonl", of_e(4) + line(5) + of_e(10), line(19) + of_e(6) + line(13));
  EXPECT_EQ(following.hear(4), "new 4\n5\nnew 6\nother 13\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"),
            "qzlog: warning: lines name no definitions, and the ID 1 has several: the first that have their IDs are "
            "used\n");
}

TEST_F(RenderFollowChoice, ReaderThatLeavesWhileNothingIsWanted_EndsIt) {
  append("a.jsonl", lines(1, 9));
  Following following = follow({"--where", "N = 1", "--output", "short", "a.jsonl"});
  EXPECT_NE(following.hear(1), "");
  following.close_output();
  EXPECT_EQ(following.wait(), -SIGPIPE);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollowChoice, TimeOrderOfLogs_IsNotThatOfAFollowedOne) {
  Following following = follow({"--merge-by-time", "a.jsonl"});
  EXPECT_EQ(following.wait(), 2);
}

// A plain model of writers that rotate: each round's last line is wanted, so that all before it have been decided on.
TEST_F(RenderFollowChoice, RandomRotations_ShowWhatIsWantedAndNothingElse) {
  qz_test::SeededRandom random;
  append("a.jsonl", line(9));
  append("logs/s.20261121.0001", line(9));
  Following following = follow({"--where", "@level in (2, 3, 5, 7, 9) and N != 15", "--since", "2026-11-21T08:08:00Z",
                                "--output", "short", "--utc", "--time-style", "short", "a.jsonl", "logs/s"});
  const auto shown = [](int number) {
    char text[96];
    const char* const levels[] = {"", "", "info", "info", "", "warning", "", "error", "", "alert"};
    const bool is_other = number % 10 == 3;
    std::snprintf(text, sizeof text, "2026-11-21 %02d:%02d:00 %-8s %s %s%d\n", 8 + number / 60, number % 60,
                  levels[number % 10], is_other ? "OTHER" : "NUMBER", is_other ? "other " : "", number);
    return std::string(text);
  };
  ASSERT_EQ(following.hear(2), shown(9) + shown(9));
  int file = 1;
  int number = 9;
  for (int round = 0; round < 25; ++round) {
    std::string expected;
    const auto some = [&](bool is_last) {
      std::string text;
      const int count = static_cast<int>(random.below(12));
      for (int left = count; left > 0 || (is_last && number % 10 != 9); --left) {
        if (++number >= 900) number = 9;
        text += line(number);
        const int level = number % 10;
        const bool is_wanted = (level == 2 || level == 3 || level == 5 || level == 7 || level == 9) && number != 15;
        if (is_wanted && number >= 8) expected += shown(number);
      }
      return text;
    };
    if (random.one_in(2)) {
      const std::string latest = some(false);
      rotate("a.jsonl", latest, some(true));
    } else {
      char name[32];
      std::snprintf(name, sizeof name, "logs/s.%08d.%04d", 20261121 + file / 5, 1 + file % 5);
      ++file;
      append(name, some(true));
    }
    ASSERT_EQ(following.hear(static_cast<std::size_t>(std::count(expected.begin(), expected.end(), '\n'))), expected)
        << "round " << round;
  }
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(following.hear_rest(), "");
  EXPECT_EQ(read("said"), "");
}

}  // namespace
}  // namespace qzlog_test
