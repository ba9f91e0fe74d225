#include "tools/command_line.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace qzlog_tool {
using qz_test::read_file;

namespace {

class CompileCommand : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return folder_.path(name); }

  std::string write(const char* name, const std::string& content) const { return folder_.write(name, content); }

  /// The exit status; what goes to standard error is in `error_`.
  int run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "compile");
    ::testing::internal::CaptureStderr();
    const int status = run_command_line(arguments);
    error_ = ::testing::internal::GetCapturedStderr();
    return status;
  }

  std::string error_;

 private:
  qz_test::TempDir folder_;
};

constexpr const char* kGood = "version: 1.0\nentries: [{id: 1, name: A, message: text}]\n";
constexpr const char* kBad = "version: 1.0\nentries: [{id: 1, name: a, message: text}]\n";

TEST_F(CompileCommand, GoodSource_WritesAFileAndSaysNothing) {
  EXPECT_EQ(run({write("a.yaml", kGood), "-o", path("a.ldf")}), 0);
  EXPECT_EQ(error_, "");
  EXPECT_EQ(read_file(path("a.ldf")).substr(0, 4), ".LDF");
}

TEST_F(CompileCommand, SourceWithErrors_LeavesTheOldFile) {
  write("a.ldf", "old");
  const std::string source = write("a.yaml", kBad);
  EXPECT_EQ(run({source, "-o", path("a.ldf")}), 1);
  EXPECT_EQ(error_, source +
                        ":2:25: error: bad entry name 'a' [bad-entry-name]\n"
                        "    2 | entries: [{id: 1, name: a, message: text}]\n"
                        "      |                         ^\n"
                        "  hint: a name begins with A-Z and goes on with A-Z, 0-9 and _\n");
  EXPECT_EQ(read_file(path("a.ldf")), "old");
}

TEST_F(CompileCommand, MissingSource_IsStatusTwo) {
  EXPECT_EQ(run({path("none.yaml"), "-o", path("a.ldf")}), 2);
  EXPECT_EQ(error_, "qzlog: error: cannot open '" + path("none.yaml") + "': No such file or directory\n");
}

TEST_F(CompileCommand, OutputThatCannotBeWritten_IsStatusTwo) {
  EXPECT_EQ(run({write("a.yaml", kGood), "-o", path("none/a.ldf")}), 2);
  EXPECT_EQ(error_, "qzlog: error: cannot write '" + path("none/a.ldf") + "': No such file or directory\n");
}

TEST_F(CompileCommand, OutputThatIsAnInput_IsRefused) {
  const std::string source = write("a.yaml", kGood);
  const std::string standard = write("std.yaml", kGood);
  const std::string other_spelling = path("./a.yaml");
  EXPECT_EQ(run({source, "-o", other_spelling}), 2);
  EXPECT_EQ(error_, "qzlog: error: the output '" + other_spelling + "' is one of the input files\n");
  EXPECT_EQ(run({source, "-o", standard, "--aux-of", standard}), 2);
  EXPECT_EQ(read_file(source), kGood);
  EXPECT_EQ(read_file(standard), kGood);
}

TEST_F(CompileCommand, CompiledStandard_GivesTheSameFileAsItsSource) {
  const std::string standard = write("std.yaml",
                                     "version: 1.0\nentries: [{id: 1, name: A, message: m, word: 4,"
                                     " attributes: [{name: X, type: UInt4}]}]\n");
  const std::string aux = write("aux.yaml", "version: 1.0\nentries: [{id: 1, name: A, message: 'now {X}'}]\n");
  EXPECT_EQ(run({standard, "-o", path("std.ldf")}), 0);
  EXPECT_EQ(run({aux, "-o", path("one.ldf"), "--aux-of", standard}), 0);
  EXPECT_EQ(run({aux, "-o", path("two.ldf"), "--aux-of", path("std.ldf")}), 0);
  EXPECT_EQ(read_file(path("one.ldf")), read_file(path("two.ldf")));
  EXPECT_EQ(run({aux, "-o", path("three.ldf")}), 1);
}

TEST_F(CompileCommand, WrongUsage_IsRefusedBeforeItRuns) {
  const std::string source = write("a.yaml", kGood);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {source}, {source, "-o", path("a.ldf"), "--path", "neither"}}) {
    EXPECT_EQ(run(arguments), 2);
    EXPECT_NE(error_.find("Run 'qzlog --help'"), std::string::npos) << error_;
  }
  EXPECT_FALSE(std::filesystem::exists(path("a.ldf")));
}

}  // namespace
}  // namespace qzlog_tool
