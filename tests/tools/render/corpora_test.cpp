// Real logs, compiled and rendered: every message comes out as its author wrote it, on both paths.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>

#include "tests/tools/command_fixture.h"

namespace {

using qz_test::read_file;
using qzlog_test::CommandResult;

const std::filesystem::path kCorpora = QZLOG_CORPORA;

struct LogSet {
  const char* folder;
  const char* set;
  bool narrow;  // which path it is rendered on
};

void PrintTo(const LogSet& set, std::ostream* out) { *out << set.set << (set.narrow ? " narrow" : " icu"); }

// The sets whose messages have more than ten references can only be shown narrowly.
const LogSet kLogSets[] = {
    {"HDFS", "HDFS", false},
    {"HDFS", "HDFS", true},
    {"OpenSSH", "OpenSSH", false},
    {"OpenSSH", "OpenSSH", true},
    {"Mac", "Mac", false},
    {"Mac", "Mac", true},
    {"Mac", "Mac.narrow-only", true},
    {"OpenStack", "OpenStack", false},
    {"OpenStack", "OpenStack", true},
    {"OpenStack", "OpenStack.narrow-only", true},
};

class Corpora : public qzlog_test::CommandFixture, public ::testing::WithParamInterface<LogSet> {
 protected:
  void SetUp() override {
    if (!std::filesystem::is_directory(kCorpora)) GTEST_SKIP() << "no corpora in " << kCorpora;
  }

  static bool narrow() { return GetParam().narrow; }
  static std::filesystem::path file(const std::string& extension) {
    return kCorpora / GetParam().folder / (std::string(GetParam().set) + extension);
  }
  static std::string quoted(const std::string& extension) { return "'" + file(extension).string() + "'"; }

  // Byte for byte; the first line that differs says more than two long texts.
  static void expect_messages(const CommandResult& result) {
    const std::string expected = read_file(file(".expected"));
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    const auto [ours, theirs] = std::mismatch(result.out.begin(), result.out.end(), expected.begin(), expected.end());
    const auto at = static_cast<std::size_t>(ours - result.out.begin());
    EXPECT_TRUE(ours == result.out.end() && theirs == expected.end())
        << "line " << 1 + std::count(result.out.begin(), ours, '\n') << "\n"
        << result.out.substr(at - std::min<std::size_t>(at, 40), 200) << "\n instead of\n"
        << expected.substr(at - std::min<std::size_t>(at, 40), 200);
  }
};

TEST_P(Corpora, CompiledForThePath_RendersTheOriginalMessages) {
  const std::string path = narrow() ? "narrow" : "icu";
  const CommandResult compiled = run("$QZLOG compile " + quoted(".yaml") + " -o set.ldf --path " + path);
  // That the numbers of these logs are below 2147483648 is more than the compiler can know.
  std::istringstream lines(compiled.err);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_TRUE(line.starts_with(' ') || line.ends_with("[negative-unsigned]")) << line;
  }
  ASSERT_EQ(compiled.status, 0);
  expect_messages(run("$QZLOG render --definitions set.ldf " + quoted(".jsonl") + (narrow() ? " --no-icu" : "")));
}

TEST_P(Corpora, Source_RendersTheOriginalMessages) {
  expect_messages(
      run("$QZLOG render --definitions " + quoted(".yaml") + (narrow() ? " --no-icu" : "") + " < " + quoted(".jsonl")));
}

INSTANTIATE_TEST_SUITE_P(Loghub, Corpora, ::testing::ValuesIn(kLogSets), [](const auto& parameter) {
  std::string name = parameter.param.set;
  std::erase_if(name, [](char letter) { return letter == '.' || letter == '-'; });
  return name + (parameter.param.narrow ? "Narrow" : "Icu");
});

}  // namespace
