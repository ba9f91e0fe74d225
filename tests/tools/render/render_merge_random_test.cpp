// --merge-by-time against sort(1): random logs, in files, series and standard input, with choices.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

/// A line and what the plain way knows of it.
struct PlainLine {
  std::string text;
  int minute = -1;  // it says none
  int number = 0;
  int level = 0;
  bool is_shown = true;
};

std::string two_digits(int number) { return (number < 10 ? "0" : "") + std::to_string(number); }

PlainLine random_line(qz_test::SeededRandom& random, int number) {
  const int minute = static_cast<int>(random.below(60));
  const int level = static_cast<int>(random.below(10));
  const std::string head = R"("id":1,"level":)" + std::to_string(level);
  const std::string tail = R"("attributes":{"N":)" + std::to_string(number) + "}}";
  const std::string digits = two_digits(minute);
  switch (random.below(10)) {
    case 0:
      return {"{" + head + "," + tail, -1, number, level};
    case 1:
      return {"{" + head + R"(,"time":"2026-11-21T12:)" + digits + R"(:00.999+04:00",)" + tail, minute, number, level};
    case 2:
      return {R"({ "time" : "2026-11-21T08:)" + digits + R"(:00z", )" + head + ", " + tail + "\r", minute, number,
              level};
    case 3:
      return {R"({"id":9,"level":3,"time":"2026-11-21T08:)" + digits + R"(:00Z",)" + tail, minute, number, level,
              false};
    case 4:
      return {"{" + head + R"(,"time":"soon",)" + tail, -1, number, level, false};
    default:
      return {"{" + head + R"(,"time":"2026-11-21T08:)" + digits + R"(:00Z",)" + tail, minute, number, level};
  }
}

/// What is asked of the command, of the plain lines, and of those that are left.
struct Choice {
  const char* options;
  bool (*wants)(const PlainLine&);
  const char* filter;
};

constexpr Choice kChoices[] = {
    {"", [](const PlainLine&) { return true; }, "cat"},
    {"--where 'N > 20 and N <= 300'", [](const PlainLine& line) { return line.number > 20 && line.number <= 300; },
     "cat"},
    {"--level 5..", [](const PlainLine& line) { return line.level >= 5; }, "cat"},
    {"--since 2026-11-21T08:10:00Z --until 2026-11-21T08:40:00Z",
     [](const PlainLine& line) { return line.minute >= 10 && line.minute <= 40; }, "cat"},
    {"--head 7", [](const PlainLine&) { return true; }, "head -n 7"},
    {"--level ..4 --tail 9", [](const PlainLine& line) { return line.level <= 4; }, "tail -n 9"},
};

class RenderMergeRandom : public qzlog_test::CommandFixture {
 protected:
  RenderMergeRandom() {
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
          "entries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
    write("e.yaml",
          "version: \"1.0\"\nentries:\n  - {id: 1, name: T, message: \"other {N}\", attributes: "
          "[{name: N, type: UInt2}]}\n");
  }

  /// A log in its files: its lines, and the same behind the minute at which each comes, for sort.
  void add_log(const std::vector<std::string>& files, const Choice& choice) {
    int latest = -1;
    for (const std::string& file : files) {
      std::string text = random_.one_in(5) ? "\xEF\xBB\xBF" : "";
      for (std::size_t left = random_.below(30); left > 0; --left) {
        const PlainLine line = random_line(random_, ++number_);
        latest = std::max(latest, line.minute);
        text += line.text + (random_.one_in(15) ? "\n \n" : "\n");
        if (line.is_shown && choice.wants(line))
          decorated_ += std::to_string(latest) + '\t' + std::to_string(line.number) + '\n';
      }
      write(file, text);
    }
  }

  /// A folder with two series and a file, files, and standard input behind them.
  std::string add_logs(const Choice& choice) {
    number_ = 0;
    decorated_.clear();
    add_log({"logs/s.20261121.0001", "logs/s.20261121.0002", "logs/s.20261122.0001"}, choice);
    add_log({"logs/t.20261121.0001"}, choice);
    add_log({"logs/u.jsonl"}, choice);
    std::string operands = "logs";
    for (std::size_t left = random_.below(4); left > 0; --left) {
      const std::string name = "f" + std::to_string(left) + ".jsonl";
      add_log({name}, choice);
      operands += " " + name;
    }
    add_log({"standard_input"}, choice);
    write("decorated.txt", decorated_);
    return operands + " -";
  }

  qz_test::SeededRandom random_;
  int number_ = 0;
  std::string decorated_;
};

TEST_F(RenderMergeRandom, LinesAndChoices_ComeAsAStableSortHasThem) {
  std::filesystem::create_directory(folder_.path("logs"));
  for (int round = 0; round < 5; ++round) {
    for (const Choice& choice : kChoices) {
      const std::string operands = add_logs(choice);
      const std::string wanted =
          run("LC_ALL=C sort -s -n -k1,1 decorated.txt | cut -f2 | " + std::string(choice.filter)).out;
      // Several definitions are the same to the order.
      for (const char* const definitions : {"--definitions d.yaml", "--definitions d.yaml --definitions e.yaml"}) {
        const CommandResult merged = run("$QZLOG render --no-icu " + std::string(definitions) + " --merge-by-time " +
                                         choice.options + " " + operands + " <standard_input");
        ASSERT_EQ(merged.out, wanted) << definitions << ' ' << choice.options << " in round " << round;
      }
    }
  }
}

// What is wrong stands where its line does: errors and messages in one stream are in the order of all lines.
TEST_F(RenderMergeRandom, WrongLines_AreToldWhereTheyStand) {
  std::filesystem::create_directory(folder_.path("logs"));
  std::string all;
  std::string decorated;
  for (const std::string name : {"a.jsonl", "b.jsonl", "c.jsonl"}) {
    std::string text;
    int latest = -1;
    for (int at = 1; at <= 30; ++at) {
      const PlainLine line = random_line(random_, at);
      latest = std::max(latest, line.minute);
      text += line.text + "\n";
      decorated += std::to_string(latest) + '\t' +
                   (line.is_shown ? std::to_string(line.number) : name + ":" + std::to_string(at) + ":") + '\n';
    }
    write(name, text);
  }
  write("decorated.txt", decorated);
  const std::string wanted = run("LC_ALL=C sort -s -n -k1,1 decorated.txt | cut -f2").out;
  const CommandResult merged =
      run("$QZLOG render --no-icu --definitions d.yaml --merge-by-time a.jsonl b.jsonl c.jsonl 2>&1 | "
          "sed -nE 's/^(.*jsonl:[0-9]+:)([0-9]+:)? error: .*/\\1/p; /^[0-9]+$/p'");
  EXPECT_EQ(merged.out, wanted);
}

}  // namespace
