#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

// The bytes that a block of lines has, as a rule.
constexpr std::size_t kBlockBytes = std::size_t{256} << 10;
constexpr std::size_t kLongestLine = std::size_t{16} << 20;
const std::string kByteOrderMark = "\xEF\xBB\xBF";

/// What several threads make of logs, against what one makes of them.
class RenderJobs : public qzlog_test::CommandFixture {
 protected:
  RenderJobs() {
    write("d.yaml",
          "version: \"1.0\"\n"
          "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\n"
          "entries:\n"
          "  - {id: 1, name: NUMBER, mask: 1, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n"
          "  - {id: 2, name: TEXT, message: \"[{T}]\", attributes: [{name: T, type: MBChar2K}]}\n");
  }

  static std::string entry(std::uint64_t number) {
    return R"({"id":1,"time":"2026-11-21T08:15:30Z","attributes":{"N":)" + std::to_string(number) + "}}";
  }
  static std::string entries(std::uint64_t first, std::uint64_t last) {
    std::string lines;
    for (std::uint64_t number = first; number <= last; ++number) lines += entry(number) + '\n';
    return lines;
  }
  /// Lines that take so many bytes, of which the last is longer than the others.
  static std::string lines_of(std::size_t bytes) {
    std::string lines;
    while (lines.size() + 200 < bytes) lines += entry(lines.size()) + '\n';
    return lines + std::string(bytes - lines.size() - 1, ' ') + '\n';
  }

  CommandResult render(int jobs, const std::string& arguments) const {
    return run("$QZLOG render --definitions d.yaml --jobs " + std::to_string(jobs) + ' ' + arguments);
  }
  /// Returns what they all made of it.
  CommandResult expect_same(const std::string& arguments, const std::vector<int>& jobs = {2, 3, 8}) const {
    const CommandResult one = render(1, arguments);
    for (const int count : jobs) {
      const CommandResult several = render(count, arguments);
      EXPECT_TRUE(several.out == one.out) << arguments << ", " << count << " jobs: " << several.out.size() << " bytes, "
                                          << one.out.size() << " from one";
      EXPECT_EQ(several.err, one.err) << arguments << ", " << count << " jobs";
      EXPECT_EQ(several.status, one.status) << arguments << ", " << count << " jobs";
    }
    return one;
  }
};

std::string random_line(qz_test::SeededRandom& random, std::uint64_t number) {
  const std::string right = R"({"id":1,"attributes":{"N":)" + std::to_string(number) + "}}";
  switch (random.below(40)) {
    case 0:
      return "";
    case 1:
      return " \t\r";
    case 2:
      return "x";
    case 3:
      return right.substr(0, right.size() / 2);
    case 4:
      return R"({"id":99})";
    case 5:
      return right + '\r';
    case 6:
      return kByteOrderMark + right;
    case 7:
      return R"({"id":1,"attributes":{"N":-1}})";
    case 8:
      return R"({"id":2,"attributes":{"T":")" + std::string(random.below(2000), 'a') + R"("}})";
    case 9:
      return R"({"seq":3,"writer":"web1/4711/1795248900","lost":[{"id":1,"level":3,"count":2}]})";
    default:
      return right;
  }
}

TEST_F(RenderJobs, LinesOfAllKinds_AreShownAndReportedAsByOne) {
  qz_test::SeededRandom random;
  std::string first = kByteOrderMark;
  std::string second;
  for (std::uint64_t number = 0; number < 7000; ++number) {
    first += random_line(random, number) + '\n';
    second += random_line(random, number) + "\r\n";
  }
  write("first", first + R"({"id":1,"attr)");
  write("second", second + entry(1));
  write("empty", "");
  write("mark", kByteOrderMark);
  const std::string files = " first nowhere second empty mark first - second <second";
  const CommandResult result = expect_same("--no-icu" + files);
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("first:7001:14: error: the last line breaks off"), std::string::npos);
  for (const char* const options :
       {"--locale de", "--output short --time-zone Europe/Berlin", "--output long", "--output json", "--output csv",
        "--output table", "--format '{file}:{line} {message}'", "--where 'N > 4000' --format '{line}'", "--id 2",
        "--since 2026-11-21", "--mask 1 --level-low 2", "--level 0..2 --exit-status"}) {
    expect_same(options + files);
  }
}

TEST_F(RenderJobs, WrongLinesAtTheEdgesOfBlocks_HaveTheirNumbers) {
  for (const std::size_t bytes : {kBlockBytes - 2, kBlockBytes - 1, kBlockBytes, kBlockBytes + 1}) {
    for (const std::string& line : {std::string("x"), std::string(), kByteOrderMark + entry(1), entry(7)}) {
      write("entries", lines_of(bytes) + line + '\n' + lines_of(bytes) + line);
      expect_same("entries", {2});
      expect_same("--format '{line} {message}' entries", {2});
    }
  }
}

TEST_F(RenderJobs, LongLines_AreJudgedAsByOne) {
  for (const std::size_t excess : {std::size_t{0}, std::size_t{1}, std::size_t{4}, kBlockBytes + 1}) {
    for (const std::string& beginning : {std::string(), kByteOrderMark, entry(1) + '\n'}) {
      const std::string line(kLongestLine + excess, 'a');
      write("entries", beginning + line + '\n' + entries(1, 9) + "x\n" + line);
      const CommandResult result = expect_same("entries 2>&1 | cut -c1-99", {2});
      EXPECT_NE(result.out.find(":" + std::string(beginning.size() > 3 ? "12" : "11") + ":1: error: "),
                std::string::npos);
    }
  }
}

TEST_F(RenderJobs, MessagesBeforeWrongLines_ComeBeforeTheirErrors) {
  write("entries", entries(1, 5000) + "x\n" + entries(5001, 20000) + "x\n" + entries(20001, 20001));
  const CommandResult result = expect_same("entries 2>&1");
  EXPECT_NE(result.out.find("\n5000\nentries:5001:1: error: "), std::string::npos);
}

/// Lines with what such options look at: numbers of a writer, of which every 1000th is missing and every 1500th comes
/// twice, times that go up from `second` on in steps of 2 s, and characters that are not ASCII.
std::string numbered_lines(const std::string& writer, int count, int second) {
  std::string lines;
  for (int seq = 1; seq <= count; ++seq) {
    if (seq % 1000 == 0) continue;
    const int at = second + 2 * seq;
    const auto two_digits = [](int number) { return std::to_string(100 + number).substr(1); };
    const std::string time =
        "2026-11-21T" + two_digits(at / 3600) + ':' + two_digits(at / 60 % 60) + ':' + two_digits(at % 60);
    const std::string line = R"({"writer":")" + writer + R"(","seq":)" + std::to_string(seq) + R"(,"id":2,"time":")" +
                             time + R"(Z","attributes":{"T":"Größe )" + std::to_string(seq) + "\"}}\n";
    lines += line;
    if (seq % 1500 == 0) lines += line;
  }
  return lines;
}

TEST_F(RenderJobs, OptionsThatLookAtOtherLines_AreDoneByOne) {
  write("one", numbered_lines("one/1/1", 9000, 0));
  write("two", numbered_lines("two/2/2", 9000, 1));
  const auto expect_effect = [&](const std::string& options) {
    const CommandResult result = expect_same(options + " one two", {4});
    const CommandResult plain = render(4, "one two");
    EXPECT_TRUE(result.out != plain.out || result.err != plain.err) << options;
  };
  for (const char* const options :
       {"--head 3", "--tail 3", "--unique", "--check-gaps", "--merge-by-time", "--code-page ISO-8859-1"}) {
    expect_effect(options);
  }
  write("entries", entries(1, 9000));
  EXPECT_EQ(render(4, "--count counts entries").status, 0);
  EXPECT_EQ(run("$QZLOG count show counts.cnt | grep -q 9000").status, 0);
}

TEST_F(RenderJobs, AllProcessors_AreAskedForByZero) {
  write("entries", entries(1, 20000));
  expect_same("entries", {0});
  EXPECT_EQ(run("$QZLOG render --definitions d.yaml -j 257 entries").status, 2);
}

TEST_F(RenderJobs, ReaderThatLeaves_EndsIt) {
  write("entries", entries(1, 200000));
  const std::string command =
      "{ timeout 60 $QZLOG render --no-icu --definitions d.yaml entries -j %; echo \"status $?\" >&2; } | head -2";
  const auto with_jobs = [&](const char* jobs) { return std::string(command).replace(command.find('%'), 1, jobs); };
  const CommandResult result = run(with_jobs("3"));
  EXPECT_EQ(result.out, "1\n2\n");
  EXPECT_EQ(result.err, run(with_jobs("1")).err);
}

// The rest of each line is only written when the message of the one before has come.
TEST_F(RenderJobs, Messages_AreWrittenBeforeMoreInputIsWaitedFor) {
  const CommandResult result =
      run("mkfifo in out; timeout 60 $QZLOG render --no-icu --definitions d.yaml -j 2 - <in >out & "
          "exec 3>in 4<out; printf '{\"id\"' >&3; for i in 1 2 3; do "
          "printf ':1,\"attributes\":{\"N\":7}}\\n{\"id\"' >&3; timeout 30 head -1 <&4; done; exec 3>&-; wait");
  EXPECT_EQ(result.out, "7\n7\n7\n");
}

TEST_F(RenderJobs, PatternThatIcuCannotApply_IsReportedBehindTheMessagesBeforeIt) {
  write("broken.yaml", R"(version: "1.0"
entries:
  - {id: 1, name: GOOD, message: "good"}
  - {id: 2, name: BROKEN, raw: "%s%N% {0,date} %_%TIMESTAMP%", attributes: [{name: N, type: Char32}]}
)");
  const std::string broken = "{\"id\":2,\"attributes\":{\"N\":\"x\"}}\n";
  std::string lines;
  for (int i = 0; i < 60000; ++i) lines += "{\"id\":1}\n";
  write("entries", lines + broken + broken + lines + broken);
  const std::string command = "$QZLOG render --definitions broken.yaml entries -j ";
  const CommandResult one = run(command + '1');
  EXPECT_EQ(one.status, 1);
  for (const char* const jobs : {"2", "3", "8"}) {
    const CommandResult several = run("timeout 60 " + command + jobs);
    EXPECT_EQ(several.out.size(), one.out.size());
    EXPECT_EQ(several.err, one.err);
    EXPECT_EQ(several.status, 1);
  }
}

TEST_F(RenderJobs, PatternInEveryBlockThatIcuCannotApply_EndsBehindTheFirst) {
  write("broken.yaml", R"(version: "1.0"
entries:
  - {id: 1, name: GOOD, message: "good"}
  - {id: 2, name: BROKEN, raw: "%s%N% {0,date} %_%TIMESTAMP%", attributes: [{name: N, type: Char32}]}
)");
  std::string lines;
  for (int i = 0; i < 100'000; ++i)
    lines += i % 1000 == 999 ? "{\"id\":2,\"attributes\":{\"N\":\"x\"}}\n" : "{\"id\":1}\n";
  write("entries", lines);
  const std::string command = "timeout 60 $QZLOG render --definitions broken.yaml entries -j ";
  const CommandResult one = run(command + '1');
  for (const char* const jobs : {"2", "3", "8"}) {
    const CommandResult several = run(command + jobs);
    EXPECT_EQ(several.out, one.out);
    EXPECT_EQ(several.err, one.err);
    EXPECT_EQ(several.status, one.status);
  }
}

TEST_F(RenderJobs, FileThatCannotBeRead_IsReportedBehindWhatWasRead) {
  write("entries", entries(1, 30000));
  std::filesystem::create_directory(folder_.path("folder.jsonl"));
  expect_same("entries folder.jsonl/ nowhere entries");
}

TEST_F(RenderJobs, ShortLines_AreShownAndReportedAsByOne) {
  std::string lines;
  for (int i = 0; i < 30'000; ++i) lines += i % 3 == 0 ? "\n" : i % 3 == 1 ? "{\"id\":2}\n" : "x\n";
  write("entries", lines + "y");
  expect_same("--format '{line}' entries entries");
}

#ifndef QZLOG_SANITIZED
// No stack of four gigabytes fits in three.
TEST_F(RenderJobs, NoThreads_IsNoFailure) {
  write("entries", entries(1, 20000) + "x\n");
  const CommandResult one = render(1, "entries");
  const CommandResult several =
      run("ulimit -s 4194304 && ulimit -v 3145728 && $QZLOG render --definitions d.yaml --jobs 4 entries");
  EXPECT_TRUE(several.out == one.out);
  EXPECT_EQ(several.err, one.err);
  EXPECT_EQ(several.status, 1);
}

TEST_F(RenderJobs, Memory_DoesNotGrowWithTheLog) {
  write("entries", entries(1, 50000) + std::string(kLongestLine - 1, ' ') + '\n');
  const auto peak_with = [this](int files) {
    std::string names;
    for (int i = 0; i < files; ++i) names += " entries";
    return std::stoul(run("/usr/bin/time -o peak -f %M $QZLOG render --no-icu --definitions d.yaml -j 2" + names +
                          " >/dev/null 2>&1; tail -1 peak")
                          .out);
  };
  // In KiB; 36 files more have 700 MiB.
  EXPECT_LT(peak_with(40), peak_with(4) + (100U << 10));
  std::string wrong;
  for (int i = 0; i < 500'000; ++i) wrong += "x\n";
  write("entries", wrong);
  EXPECT_LT(peak_with(1), 100U << 10);
}
#endif

}  // namespace
