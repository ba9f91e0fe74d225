#include "tools/definition_revision.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/tools/temporary_folder.h"
#include "tools/child_process.h"
#include "tools/command_error.h"
#include "tools/compiler/compiler.h"

namespace {

using qzlog_tool::CommandError;
using qzlog_tool::DefinitionRevision;
using qzlog_tool::load_definition_revision;
using qzlog_tool::read_definition_revision;

constexpr const char* kOldSource = "version: \"1.0\"\nentries:\n  - {id: 7, name: FULL, message: \"old\"}\n";
constexpr const char* kNewSource = "version: \"1.1\"\nentries:\n  - {id: 7, name: FULL, message: \"new\"}\n";

/// Makes a folder the working folder as long as it lives.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;
  ~WorkingFolder() { std::filesystem::current_path(before_); }

 private:
  std::filesystem::path before_;
};

std::string failure_of(const std::string& argument) {
  try {
    read_definition_revision(argument);
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
    return error.what();
  }
  return "none";
}

/// A repository with one committed source, "dir/events.yaml", which has changed since.
class GitInput : public ::testing::Test {
 protected:
  GitInput() : working_folder_(folder_.path()) {
    std::filesystem::create_directory(folder_.path() / "dir");
    git({"init", "--quiet"});
    folder_.write("dir/events.yaml", kOldSource);
    git({"add", "."});
    git({"-c", "user.name=Test", "-c", "user.email=test@example.com", "-c", "commit.gpgsign=false", "commit", "--quiet",
         "--message=First"});
    folder_.write("dir/events.yaml", kNewSource);
  }

  static void git(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "git");
    if (qzlog_tool::run_program(std::move(arguments)).status != 0) throw std::runtime_error("git has failed");
  }

  qzlog_test::TemporaryFolder folder_;
  WorkingFolder working_folder_;
};

TEST_F(GitInput, Revision_GivesWhatWasCommitted) {
  const DefinitionRevision input = read_definition_revision("git:HEAD:dir/events.yaml");
  EXPECT_EQ(input.content, kOldSource);
  EXPECT_EQ(input.name, "git:HEAD:dir/events.yaml");
}

TEST_F(GitInput, NoRevision_GivesTheIndex) {
  git({"add", "."});
  EXPECT_EQ(read_definition_revision("git::dir/events.yaml").content, kNewSource);
}

TEST_F(GitInput, RelativePath_CountsFromTheWorkingFolder) {
  const WorkingFolder inside(folder_.path() / "dir");
  EXPECT_EQ(read_definition_revision("git:HEAD:./events.yaml").content, kOldSource);
}

TEST_F(GitInput, ShellCharacters_AreNotInterpreted) {
  EXPECT_EQ(failure_of("git:HEAD:$(touch made)"),
            "cannot read 'git:HEAD:$(touch made)': git has failed with status 128");
  EXPECT_FALSE(std::filesystem::exists(folder_.path() / "made"));
}

TEST_F(GitInput, FileNamedLikeTheObject_IsNotTakenForAPath) {
  folder_.write("HEAD:absent", "text");
  EXPECT_EQ(failure_of("git:HEAD:absent"), "cannot read 'git:HEAD:absent': git has failed with status 128");
}

TEST_F(GitInput, RevisionLikeAnOption_IsRefused) {
  EXPECT_EQ(failure_of("git:--output=made:dir/events.yaml"),
            "'git:--output=made:dir/events.yaml': a revision does not begin with '-'");
  EXPECT_FALSE(std::filesystem::exists(folder_.path() / "made"));
}

TEST(DefinitionRevisionTest, GitWithoutAPath_IsRefused) {
  for (const std::string argument : {"git:", "git:HEAD", "git:HEAD:"}) {
    EXPECT_EQ(failure_of(argument), "'" + argument + "' lacks a path; write git:REV:PATH");
  }
}

TEST(DefinitionRevisionTest, MissingFile_IsNamed) {
  EXPECT_EQ(failure_of("absent.yaml"), "cannot open 'absent.yaml': No such file or directory");
}

TEST(LoadDefinitionRevision, SourceAndItsCompiledFile_GiveTheSameRecords) {
  const auto source = load_definition_revision({"events.yaml", kOldSource}, {});
  ASSERT_TRUE(source.ok());
  const auto compiled = load_definition_revision({"events.ldf", source.bytes}, {});
  ASSERT_TRUE(compiled.ok());
  EXPECT_EQ(compiled.model.entries.at(0).message.stored, source.model.entries.at(0).message.stored);
  EXPECT_EQ(compiled.model.entries.at(0).name, "");
}

TEST(LoadDefinitionRevision, SourceWithAWarning_HasNoDiagnostics) {
  const std::string source = "version: \"1.0\"\nentries:\n  - {id: 7, name: FULL, message: \"a {{ b\"}\n";
  ASSERT_FALSE(qzlog_compiler::compile_source(source, "events.yaml", {}).diagnostics.empty());
  EXPECT_TRUE(load_definition_revision({"events.yaml", source}, {}).diagnostics.empty());
}

}  // namespace
