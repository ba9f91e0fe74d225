// What file sinks write, as programs see it that read JSON: each accepts every line and finds in it what was written.
#include <gtest/gtest.h>
#include <simdjson.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/other_programs/hostile_series.h"
#include "tests/support/scoped_environment.h"

namespace qz_test {
namespace {

constexpr int kIsAbsent = 77;

std::string quoted(const std::vector<std::string>& paths) {
  std::string text;
  for (const std::string& path : paths) text += " '" + path + "'";
  return text;
}

std::string hexadecimal(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 15];
  }
  return text;
}

class JsonReadersTest : public HostileSeriesTest {
 protected:
  std::string sum_of_numbers() const { return std::to_string(count() * (count() - 1ULL) / 2); }
};

TEST_F(JsonReadersTest, Simdjson_AcceptsEveryLine) {
  simdjson::dom::parser parser;
  unsigned entries = 0;
  for (const std::string& path : files()) {
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
      simdjson::dom::element element;
      ASSERT_EQ(parser.parse(line).get(element), simdjson::SUCCESS) << path << ": " << line;
      std::uint64_t number = 0;
      if (element["attributes"]["Number"].get(number) == simdjson::SUCCESS) {
        EXPECT_EQ(number, entries++);
      }
    }
    EXPECT_TRUE(file.eof()) << path;
  }
  EXPECT_EQ(entries, count());
}

TEST_F(JsonReadersTest, Python_AcceptsEveryLineAndFindsTheStoredBytes) {
  if (!has_program("python3")) GTEST_SKIP() << "python3 is not installed";
  std::string expected;
  for (const Written& entry : written()) expected += entry.code_page + "," + hexadecimal(entry.stored) + "\n";
  const std::string list = folder_.write("expected.csv", expected);
  const ShellResult result =
      run_shell("python3 -B '" QZLOG_OTHER_PROGRAMS "/compare_stored_texts.py' '" + list + "'" + quoted(files()));
  EXPECT_EQ(result.output, std::to_string(count()) + " entries\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(JsonReadersTest, Jq_AcceptsEveryLine) {
  if (!has_program("jq")) GTEST_SKIP() << "jq is not installed";
  const ShellResult sum = run_shell(
      "jq -n -c '[inputs | .attributes.Number // empty] | [length, add, (unique | length)]'" + quoted(files()));
  const std::string all = std::to_string(count());
  EXPECT_EQ(sum.output, "[" + all + "," + sum_of_numbers() + "," + all + "]\n");
  const ShellResult gaps =
      run_shell("cat " + series_pattern() +
                " | jq -s -c 'group_by(.writer) | map(map(.seq) == [range(1; length + 1)]) | unique'");
  EXPECT_EQ(gaps.output, "[true]\n");
}

// The questions are those of the documentation.
TEST_F(JsonReadersTest, DuckDb_ReadsTheSeries) {
  if (!has_program("node")) GTEST_SKIP() << "node is not installed";
  const ShellResult result =
      run_shell("cd '" + folder_.path() +
                "' && node '" QZLOG_OTHER_PROGRAMS "/ask_duckdb.cjs' '" QZLOG_SOURCES "/docs/keeping-entries.md'");
  if (result.status == kIsAbsent) GTEST_SKIP() << "the npm package @duckdb/node-api is not installed";
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output, "");
}

TEST_F(JsonReadersTest, Lnav_ReadsTheSeriesWithTheInstalledFormat) {
  if (!has_program("lnav")) GTEST_SKIP() << "lnav is not installed";
  const SetEnv home("HOME", folder_.path());
  const UnsetEnv settings("XDG_CONFIG_HOME");
  ASSERT_EQ(run_shell("lnav -i '" QZLOG_SOURCES "/cmake/qzlog-lnav.json'").status, 0);
  const ShellResult warnings = run_shell("lnav -W -n -q " + series_pattern());
  EXPECT_EQ(warnings.output, "");
  const ShellResult sums = run_shell(
      "lnav -n -c ';SELECT count(*), sum(jget(attributes, \"/Number\")), min(level), max(level), count(DISTINCT id)"
      " FROM qzlog_entries' -c ':write-csv-to -' " +
      series_pattern());
  EXPECT_NE(sums.output.find("\n" + std::to_string(count()) + "," + sum_of_numbers() + ",0,9,1\n"), std::string::npos)
      << sums.output;
  const ShellResult levels = run_shell(
      "lnav -n -c ';SELECT DISTINCT level, log_level FROM qzlog_entries ORDER BY level' -c ':write-csv-to -' " +
      series_pattern());
  EXPECT_EQ(levels.output,
            "level,log_level\n0,debug\n1,debug\n2,info\n3,info\n4,notice\n5,warning\n6,warning\n7,error\n8,critical\n"
            "9,fatal\n");
}

}  // namespace
}  // namespace qz_test
