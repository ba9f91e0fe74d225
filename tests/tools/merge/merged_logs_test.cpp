#include "tools/merge/merged_logs.h"

#include <algorithm>
#include <fstream>

#include "tests/support/seeded_random.h"
#include "tests/tools/merge/merge_fixture.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_tool::InputFiles;
using qzlog_tool::MergedLogs;

class MergedLogsTest : public qzlog_test::MergeFixture {};

constexpr const char* kUntimed = R"({"id":1,"level":3,"attributes":{"N":1}})"
                                 "\n";

TEST_F(MergedLogsTest, LinesOfSeveralLogs_ComeByTimeAndThenAsTheLogsWereGiven) {
  const std::string a = folder_.write("a", at(1) + at(5) + at(9));
  const std::string b = folder_.write("b", at(2) + at(5) + at(5) + at(7));
  EXPECT_EQ(merge(Texts{a, b}), (Texts{"a:1", "b:1", "a:2", "b:2", "b:3", "b:4", "a:3"}));
  EXPECT_EQ(merge(Texts{b, a}), (Texts{"a:1", "b:1", "b:2", "b:3", "a:2", "b:4", "a:3"}));
  EXPECT_TRUE(all_read_);
}

TEST_F(MergedLogsTest, LineWithoutOrWithAnEarlierTime_ComesBehindTheOneBeforeIt) {
  const std::string a = folder_.write("a", at(5) + kUntimed + at(3) + at(8));
  const std::string b = folder_.write("b", kUntimed + at(4) + at(5) + at(6));
  EXPECT_EQ(merge(Texts{a, b}), (Texts{"b:1", "b:2", "a:1", "a:2", "a:3", "b:3", "b:4", "a:4"}));
}

TEST_F(MergedLogsTest, WhatWasLostOrHeldBack_ComesWhenItWasWritten) {
  const std::string lost =
      R"({"writer":"h/1/1","seq":1,"written":"2026-11-21T09:15:04.25+01:00","time":"2026-11-21T08:15:59Z",)"
      R"("lost":[{"id":1,"level":3,"count":2}]})"
      "\n";
  const std::string plain = R"({"written":"2026-11-21T08:15:06Z","held":[{"id":1,"level":3,"count":2}]})"
                            "\n";
  const std::string a = folder_.write("a", at(1) + plain);
  const std::string b = folder_.write("b", at(5) + at(7));
  EXPECT_EQ(merge(Texts{a, b}), (Texts{"a:1", "b:1", "a:2", "b:2"}));
  const std::string c = folder_.write("c", lost);
  merge(Texts{a, b, c});
  EXPECT_EQ(std::find(seen_.begin(), seen_.end(), "b:1") -
                std::find_if(seen_.begin(), seen_.end(), [](const auto& seen) { return seen.starts_with("c:1"); }),
            1);
}

TEST_F(MergedLogsTest, TimesInAnyForm_AreCompared) {
  const std::string a = folder_.write(
      "a", "{\"attributes\":{\"N\":1}, \"time\" : \"2026-11-21T09:15:03+01:00\", \"id\":\"EVENT\"}\n" + at(5));
  const std::string b =
      folder_.write("b", at(2) + at(4) + R"({"id":1,"level":3,"time":"2026-11-21T08:14:60Z","attributes":{}})");
  EXPECT_EQ(merge(Texts{a, b}), (Texts{"b:1", "a:1", "b:2", "b:3", "a:2"}));
}

TEST_F(MergedLogsTest, Errors_AreToldWhereTheirLinesStand) {
  const std::string a = folder_.write("a", at(1) + "{\n" + at(6) + R"({"id":1,"attr)");
  const std::string b =
      folder_.write("b", at(2) + at(5) + R"({"id":7,"level":3,"time":"2026-11-21T08:15:06Z","attributes":{}})" + "\n" +
                             std::string("\n \n") + at(7));
  EXPECT_EQ(merge(Texts{a, b}),
            (Texts{"a:1", "a:2 bad-json", "b:1", "b:2", "a:3", "a:4 torn-line", "b:3 unknown-id", "b:6"}));
}

TEST_F(MergedLogsTest, Series_IsOneLogWhoseFilesAreReadInTheirOrder) {
  const std::string first = folder_.write("s1", "\xEF\xBB\xBF" + at(1) + R"({"id":1,)");
  const std::string second = folder_.write("s2", "\xEF\xBB\xBF" + at(4) + at(3));
  const std::string other = folder_.write("o", at(2) + at(3) + at(5));
  const std::vector<InputFiles> inputs = {{{first, folder_.path("gone"), second}, true}, {{other}, false}};
  EXPECT_EQ(merge(inputs), (Texts{"s1:1", "s1:2 torn-line", "o:1", "o:2", "s2:1", "s2:2", "o:3"}));
  EXPECT_TRUE(all_read_);
}

TEST_F(MergedLogsTest, LogThatCannotBeOpened_IsToldAndTheOthersAreRead) {
  const std::string a = folder_.write("a", at(1) + at(9));
  const std::string b = folder_.write("b", at(2));
  EXPECT_EQ(merge(Texts{a, folder_.path("none"), b}), (Texts{"a:1", "b:1", "a:2"}));
  EXPECT_FALSE(all_read_);
  EXPECT_EQ(failures_, Texts{"cannot open '" + folder_.path("none") + "': No such file or directory"});
}

TEST_F(MergedLogsTest, LongLines_AreReadOrPassedOverAsTheyAreByAReader) {
  constexpr std::size_t kMost = std::size_t{16} << 20;
  const std::string blanks(kMost - at(2).size() + 1, ' ');
  std::string longest = at(2);
  longest.insert(longest.size() - 1, blanks);
  const std::string a = folder_.write(
      "a", at(1) + longest + at(3) + std::string(kMost + 5, 'x') + "\n" + at(5) + std::string(kMost + 100'000, 'x'));
  const std::string b = folder_.write("b", at(2) + at(4) + at(6));
  EXPECT_EQ(merge(Texts{a, b}),
            (Texts{"a:1", "a:2", "b:1", "a:3", "a:4 long-line", "b:2", "a:5", "a:6 long-line", "b:3"}));
}

/// Takes the lines that have a text, and counts.
class WithText : public qz_LOG_LineChoice {
 public:
  explicit WithText(std::string text) : text_(std::move(text)) {}
  bool TakesLine(const char* line, std::size_t length) override {
    return std::string_view(line, length).find(text_) != std::string_view::npos;
  }

 private:
  std::string text_;
};

TEST_F(MergedLogsTest, LinesThatTheChoiceRefuses_AreCountedAndPassedOver) {
  std::string text;
  for (int index = 0; index < 5000; ++index) text += at(index % 60, 1) + (index % 1000 == 999 ? at(59, 7) : "");
  const std::string a = folder_.write("a", text);
  const std::string b = folder_.write("b", at(0, 7) + at(1, 1));
  WithText choice(R"("N":7})");
  choice_ = &choice;
  EXPECT_EQ(merge(Texts{a, b}), (Texts{"b:1", "a:1001", "a:2002", "a:3003", "a:4004", "a:5005"}));
  EXPECT_EQ(refused_, 5001U);
}

TEST_F(MergedLogsTest, LinesThatTheChoiceRefuses_CountForThePlacesOfThoseBehindThem) {
  const std::string a = folder_.write("a", at(1, 7) + at(9, 1) + at(3, 7));
  const std::string b = folder_.write("b", at(5, 7));
  WithText choice(R"("N":7})");
  choice_ = &choice;
  EXPECT_EQ(merge(Texts{a, b}), (Texts{"a:1", "b:1", "a:3"}));
}

/// Everything that can stand in a log, and when the plain way says it was.
struct PlainLine {
  std::string text;
  long long moment;  // -1: it says none
  std::string seen;  // behind its place; "-": nothing
};

PlainLine random_line(qz_test::SeededRandom& random, int number) {
  const int second = static_cast<int>(random.below(60));
  const std::string digits = (second < 10 ? "0" : "") + std::to_string(second);
  const std::string attributes = R"("attributes":{"N":)" + std::to_string(number) + "}}";
  const std::string minute = "2026-11-21T08:15:";
  switch (random.below(12)) {
    case 0:
      return {R"({"id":1,"level":3,)" + attributes, -1, ""};
    case 1:
      return {R"({"time":")" + minute + digits + R"(.75Z", "id":1,)" + attributes + "\r", second, ""};
    case 2:
      return {R"({"level":3,"id":"EVENT","time":"2026-11-21T05:45:)" + digits + R"(-02:30",)" + attributes, second, ""};
    case 3:
      return {R"({"written":")" + minute + digits + R"(.999999999Z","lost":[{"id":1,"level":3,"count":2}]})", second,
              ""};
    case 4:
      return {R"({"id":1,"level":3,"time":"2026-13-21T08:15:)" + digits + "Z\"," + attributes, -1, " bad-time"};
    case 5:
      return {R"({"id":1,"level":3,"ti)", -1, " bad-json"};
    case 6:
      return {"  \r", -1, "-"};
    case 7:
      return {R"({"id":9,"level":3,"time":")" + minute + digits + "Z\"," + attributes, second, " unknown-id"};
    default:
      return {R"({"id":1,"level":3,"time":")" + minute + digits + "Z\"," + attributes, second, ""};
  }
}

TEST_F(MergedLogsTest, RandomLogs_ComeAsAStableSortHasThem) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 200; ++round) {
    struct Placed {
      long long moment;
      std::string seen;
    };
    std::vector<Placed> wanted;
    Texts paths;
    const std::size_t logs = 1 + random.below(9);
    for (std::size_t log = 0; log < logs; ++log) {
      const std::string name = "log" + std::to_string(log);
      std::string text = random.below(4) == 0 ? "\xEF\xBB\xBF" : "";
      long long latest = -1;
      const std::size_t lines = random.below(40);
      for (std::size_t line = 1; line <= lines; ++line) {
        const PlainLine plain = random_line(random, static_cast<int>(line));
        latest = std::max(latest, plain.moment);
        text += plain.text + "\n";
        if (plain.seen != "-") wanted.push_back({latest, name + ":" + std::to_string(line) + plain.seen});
      }
      if (random.below(3) == 0) {
        text += R"({"id":1,"attributes":{)";
        wanted.push_back({latest, name + ":" + std::to_string(lines + 1) + " torn-line"});
      }
      paths.push_back(folder_.write(name, text));
    }
    std::stable_sort(wanted.begin(), wanted.end(),
                     [](const Placed& left, const Placed& right) { return left.moment < right.moment; });
    Texts expected;
    for (const Placed& placed : wanted) expected.push_back(placed.seen);
    ASSERT_EQ(merge(paths), expected) << "round " << round;
  }
}

TEST_F(MergedLogsTest, MoreLogsThanCanBeMerged_AreRefused) {
  const std::vector<InputFiles> inputs(MergedLogs::kMostLogs + 1, InputFiles{{"none"}, false});
  try {
    MergedLogs(inputs, reading());
    FAIL();
  } catch (const qzlog_tool::CommandError& error) {
    EXPECT_STREQ(error.what(), "--merge-by-time takes 500 logs at most, a series as one: these are 501");
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
  }
}

long resident_kib() {
  std::ifstream file("/proc/self/statm");
  long pages = 0;
  file >> pages >> pages;
  return pages * 4;
}

TEST_F(MergedLogsTest, AsManyLogsAsCanBeMerged_TakeAStatedMemory) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers' own memory counts";
#endif
  std::string text;
  for (int index = 0; index < 2000; ++index) text += at(index * 60 / 2000);
  std::vector<InputFiles> inputs;
  for (std::size_t log = 0; log < MergedLogs::kMostLogs; ++log)
    inputs.push_back({{folder_.write("log" + std::to_string(log), text)}, false});
  const long before = resident_kib();
  MergedLogs logs(std::move(inputs), reading());
  std::size_t lines = 0;
  long most = 0;
  while (logs.Next(line_)) {
    if (++lines % 100'000 == 0) most = std::max(most, resident_kib());
  }
  EXPECT_EQ(lines, 2000 * MergedLogs::kMostLogs);
  EXPECT_TRUE(logs.all_read());
  RecordProperty("memory_kib", static_cast<int>(most - before));
  EXPECT_LT(most - before, 60 * 1024);
}

}  // namespace
