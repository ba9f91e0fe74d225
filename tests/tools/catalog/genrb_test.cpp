#include "tools/catalog/genrb.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/resource_limit.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"
#include "tools/catalog/bundle_source.h"
#include "tools/system/command_error.h"

namespace qzlog_catalog {
namespace {

using qzlog_tool::CommandError;

std::vector<BundleSource> two_sources() {
  return {bundle_source("root", {{"a", "x"}}), bundle_source("de", {{"a", "y"}})};
}

/// What the command would exit with, and its message.
std::pair<int, std::string> failure(const std::string& program, const std::vector<BundleSource>& sources) {
  try {
    run_genrb(program, sources);
  } catch (const CommandError& error) {
    return {error.exit_status(), error.what()};
  }
  return {0, ""};
}

TEST(RunGenrb, Results_HaveTheOrderOfTheSourcesAndAreTheSameEachTime) {
  const std::vector<NamedBundle> first = run_genrb("genrb", two_sources());
  const std::vector<NamedBundle> second = run_genrb("genrb", two_sources());
  ASSERT_EQ(first.size(), 2u);
  EXPECT_EQ(first[0].name, "root");
  EXPECT_EQ(first[1].name, "de");
  EXPECT_EQ(first[0].content.substr(12, 4), "ResB");
  EXPECT_NE(first[0].content, first[1].content);
  for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(first[i].content, second[i].content);
}

TEST(RunGenrb, TemporaryFolder_IsGoneAlsoAfterAFailure) {
  const qz_test::TempDir folder;
  const qz_test::SetEnv variable("TMPDIR", folder.path());
  EXPECT_EQ(run_genrb("genrb", two_sources()).size(), 2u);
  EXPECT_EQ(failure("false", two_sources()).first, qzlog_tool::kExitFindings);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(RunGenrb, BrokenSource_FailsWithTheProgramsMessages) {
  const auto [status, text] = failure("genrb", {{"root", {{"STRING_TABLE:nothing", {{"a", "x"}}}}}});
  EXPECT_EQ(status, qzlog_tool::kExitFindings);
  EXPECT_NE(text.find("'genrb' has failed with status "), std::string::npos) << text;
  EXPECT_NE(text.find("root.txt:2: "), std::string::npos) << text;
}

/// A program that runs genrb, then does something else to the folder that it has written to.
std::string genrb_then(const qz_test::TempDir& folder, const std::string& command) {
  const std::string program = folder.write("genrb", "#!/bin/sh\ngenrb \"$@\" || exit\ncd \"$5\" && " + command + "\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  return program;
}

TEST(RunGenrb, SuccessWithoutABundle_IsAnError) {
  const qz_test::TempDir folder;
  const auto [status, text] = failure(genrb_then(folder, "rm de.res"), two_sources());
  EXPECT_EQ(status, qzlog_tool::kExitFindings);
  EXPECT_NE(text.find("/de.res', but says that it has"), std::string::npos) << text;
}

TEST(RunGenrb, SuccessWithHalfABundle_IsAnError) {
  const qz_test::TempDir folder;
  for (const std::string size : {"0", "10", "60", "-1", "+1"}) {
    const auto [status, text] = failure(genrb_then(folder, "truncate --size=" + size + " de.res"), two_sources());
    EXPECT_EQ(status, qzlog_tool::kExitFindings) << size;
    EXPECT_NE(text.find("/de.res' completely, but says that it has"), std::string::npos) << text;
  }
}

TEST(RunGenrb, SuccessWithAnotherBundle_IsAnError) {
  const qz_test::TempDir folder;
  const auto [status, text] = failure(genrb_then(folder, "cp root.res de.res"), two_sources());
  EXPECT_EQ(status, qzlog_tool::kExitFindings);
  EXPECT_NE(text.find("/de.res' completely, but says that it has"), std::string::npos) << text;
}

TEST(RunGenrb, FullDisk_IsAnError) {
  const std::vector<BundleSource> sources = {bundle_source("root", {{"a", std::string(5000, 'x')}})};
  const std::size_t source_size = genrb_text(sources[0]).size();
  ASSERT_GT(run_genrb("genrb", sources)[0].content.size(), source_size);
  const qz_test::ResourceLimit limit(RLIMIT_FSIZE, source_size);
  EXPECT_EQ(failure("genrb", sources).first, qzlog_tool::kExitFindings);
}

TEST(RunGenrb, NoSuchProgram_CannotRun) {
  const auto [status, text] = failure("/nowhere/genrb", two_sources());
  EXPECT_EQ(status, qzlog_tool::kExitCannotRun);
  EXPECT_EQ(
      text,
      "cannot run '/nowhere/genrb': No such file or directory; it is ICU's compiler for resource bundles (Debian: "
      "icu-devtools)");
}

TEST(RunGenrb, ProgramsName_IsNoShellCommand) {
  EXPECT_EQ(failure("true; true", two_sources()).first, qzlog_tool::kExitCannotRun);
  EXPECT_EQ(failure("$(echo genrb)", two_sources()).first, qzlog_tool::kExitCannotRun);
}

}  // namespace
}  // namespace qzlog_catalog
