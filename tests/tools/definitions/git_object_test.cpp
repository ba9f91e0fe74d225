#include "tools/definitions/git_object.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/signal_action.h"
#include "tests/support/temp_dir.h"
#include "tests/support/working_folder.h"
#include "tools/system/child_process.h"
#include "tools/system/command_error.h"

namespace {

using qz_test::WorkingFolder;
using qzlog_tool::CommandError;
using qzlog_tool::read_git_object;

constexpr const char* kOldSource = "version: \"1.0\"\nentries:\n  - {id: 7, name: FULL, message: \"old\"}\n";
constexpr const char* kNewSource = "version: \"1.1\"\nentries:\n  - {id: 7, name: FULL, message: \"new\"}\n";

std::string failure_of(const std::string& argument) {
  try {
    read_git_object(argument);
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
    return error.what();
  }
  return "none";
}

/// A repository with one committed source, "dir/events.yaml", which has changed since.
class GitObject : public ::testing::Test {
 protected:
  GitObject() : working_folder_(folder_.path()) {
    std::filesystem::create_directory(folder_.path("dir"));
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

  qz_test::TempDir folder_;
  WorkingFolder working_folder_;
};

TEST_F(GitObject, Revision_GivesWhatWasCommitted) {
  EXPECT_EQ(read_git_object("git:HEAD:dir/events.yaml"), kOldSource);
}

TEST_F(GitObject, NoRevision_GivesTheIndex) {
  git({"add", "."});
  EXPECT_EQ(read_git_object("git::dir/events.yaml"), kNewSource);
}

TEST_F(GitObject, RelativePath_CountsFromTheWorkingFolder) {
  const WorkingFolder inside(folder_.path("dir"));
  EXPECT_EQ(read_git_object("git:HEAD:./events.yaml"), kOldSource);
}

TEST_F(GitObject, ShellCharacters_AreNotInterpreted) {
  EXPECT_EQ(failure_of("git:HEAD:$(touch made)"),
            "cannot read 'git:HEAD:$(touch made)': git has failed with status 128");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("made")));
}

TEST_F(GitObject, FileNamedLikeTheObject_IsNotTakenForAPath) {
  folder_.write("HEAD:absent", "text");
  EXPECT_EQ(failure_of("git:HEAD:absent"), "cannot read 'git:HEAD:absent': git has failed with status 128");
}

TEST_F(GitObject, RevisionLikeAnOption_IsRefused) {
  EXPECT_EQ(failure_of("git:--output=made:dir/events.yaml"),
            "'git:--output=made:dir/events.yaml': a revision does not begin with '-'");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("made")));
}

TEST_F(GitObject, Folder_IsNoDefinition) {
  EXPECT_EQ(failure_of("git:HEAD:dir"), "cannot read 'git:HEAD:dir': git has failed with status 128");
}

// What the parent of this process has set must not change what is read.
TEST_F(GitObject, IgnoredSigchld_DoesNotMatter) {
  const qz_test::SignalAction ignored(SIGCHLD, SIG_IGN);
  EXPECT_EQ(read_git_object("git:HEAD:dir/events.yaml"), kOldSource);
}

/// A repository whose every setting and folder that names a program names one that leaves a mark.
class HostileRepository : public GitObject {
 protected:
  HostileRepository() {
    const std::string program =
        folder_.write("program", "#!/bin/sh\ntouch '" + marks() + "/'$(basename \"$0\")\nexit 1\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    std::filesystem::create_directory(marks());
    set_programs();
    add_hooks();
    become_partial();
  }

  std::string marks() const { return folder_.path("marks"); }
  bool has_marks() const { return !std::filesystem::is_empty(marks()); }

  /// A name of the program, by which its mark tells what has called it.
  std::string program(const std::string& name) const {
    const std::filesystem::path link = folder_.path(name);
    std::filesystem::create_symlink("program", link);
    return link.string();
  }

  void set_programs() const {
    for (const std::string setting :
         {"core.fsmonitor", "core.pager", "pager.show", "pager.cat-file", "core.sshCommand", "core.gitProxy",
          "core.askPass", "core.editor", "core.alternateRefsCommand", "credential.helper", "diff.external",
          "diff.marked.textconv", "diff.marked.command", "filter.marked.smudge", "filter.marked.clean",
          "filter.marked.process", "gpg.program", "remote.origin.uploadpack", "uploadpack.packObjectsHook"}) {
      git({"config", setting, program(setting)});
    }
    git({"config", "log.showSignature", "true"});
    git({"config", "protocol.allow", "always"});
    git({"config", "protocol.file.allow", "always"});
    git({"config", "protocol.ext.allow", "always"});
    folder_.write(".gitattributes", "* diff=marked filter=marked\n");
  }

  void add_hooks() const {
    for (const char* const hook : {"post-index-change", "fsmonitor-watchman", "reference-transaction", "pre-auto-gc",
                                   "post-checkout", "query-watchman"}) {
      std::filesystem::create_symlink(program(std::string("hook.") + hook),
                                      std::filesystem::path(folder_.path(".git/hooks")) / hook);
    }
    git({"config", "core.hooksPath", folder_.path(".git/hooks")});
  }

  /// The repository says that it is a partial clone, so that git would ask "origin" for what is not there.
  void become_partial() {
    git({"config", "core.repositoryFormatVersion", "1"});
    git({"config", "extensions.partialClone", "origin"});
    git({"config", "remote.origin.promisor", "true"});
    const std::string object = qzlog_tool::run_program({"git", "rev-parse", "HEAD:dir/events.yaml"}).output;
    lost_ = std::filesystem::path(folder_.path(".git/objects")) / object.substr(0, 2) /
            object.substr(2, object.find('\n') - 2);
  }

  std::filesystem::path lost_;
};

TEST_F(HostileRepository, Objects_AreReadAndNoProgramRuns) {
  std::filesystem::remove_all(marks());
  std::filesystem::create_directory(marks());
  EXPECT_EQ(read_git_object("git:HEAD:dir/events.yaml"), kOldSource);
  EXPECT_EQ(read_git_object("git::dir/events.yaml"), kOldSource);
  EXPECT_FALSE(has_marks()) << std::filesystem::directory_iterator(marks())->path();
}

TEST_F(HostileRepository, MissingObject_IsNotFetched) {
  for (const std::string& url : {folder_.path(), "ext::" + folder_.path("ext"), std::string("ssh://host/path"),
                                 std::string("git://localhost:1/path"), std::string("marked::path")}) {
    std::filesystem::remove_all(marks());
    std::filesystem::create_directory(marks());
    git({"config", "remote.origin.url", url});
    std::filesystem::remove(lost_);
    EXPECT_EQ(failure_of("git:HEAD:dir/events.yaml"),
              "cannot read 'git:HEAD:dir/events.yaml': git has failed with status 128")
        << url;
    EXPECT_FALSE(has_marks()) << url << ": " << std::filesystem::directory_iterator(marks())->path();
  }
}

TEST(ReadGitObject, GitWithoutAPath_IsRefused) {
  for (const std::string argument : {"git:", "git:HEAD", "git:HEAD:"}) {
    EXPECT_EQ(failure_of(argument), "'" + argument + "' lacks a path; write git:REV:PATH");
  }
}

TEST(NamesGitObject, Prefix_Decides) {
  EXPECT_TRUE(qzlog_tool::names_git_object("git:HEAD:a.yaml"));
  EXPECT_TRUE(qzlog_tool::names_git_object("git:"));
  EXPECT_FALSE(qzlog_tool::names_git_object("./git:HEAD:a.yaml"));
  EXPECT_FALSE(qzlog_tool::names_git_object("git"));
}

}  // namespace
