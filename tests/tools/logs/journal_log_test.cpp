#include "tools/logs/journal_log.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"
#include "tools/logs/unreadable_input.h"
#include "tools/system/command_error.h"

namespace {

using qz_test::SetEnv;
using qzlog_tool::CommandError;
using qzlog_tool::journal_address;
using qzlog_tool::JournalAddress;
using qzlog_tool::JournalLog;
using qzlog_tool::UnreadableInput;

TEST(JournalAddress, IsReadAsUsersWriteIt) {
  EXPECT_EQ(journal_address("journal")->name_space, "");
  EXPECT_EQ(journal_address("journal:storage")->name_space, "storage");
  EXPECT_EQ(journal_address("journal")->text(), "journal");
  EXPECT_EQ(journal_address("journal:a.b")->text(), "journal:a.b");
  for (const char* const other : {"", "journa", "journals", "journal/x", "nats://a/b", "./journal"}) {
    EXPECT_FALSE(journal_address(other)) << other;
  }
}

TEST(JournalAddress, NamespaceThatCannotBe_IsRefused) {
  try {
    journal_address("journal:a/b");
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(),
                 "'a/b' is no namespace of the journal: these have up to 64 letters, digits and : - _ . @");
  }
  EXPECT_THROW(journal_address("journal:"), CommandError);
}

/// A journalctl of the test's own.
class JournalLogTest : public testing::Test {
 protected:
  void journalctl_is(const std::string& script) const {
    const std::string path = folder_.write("journalctl", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }
  static std::string read_all(JournalLog& log, std::size_t piece) {
    std::string text;
    std::string part(piece, ' ');
    for (std::size_t count = 0; (count = log.Read(part.data(), part.size())) > 0;) text.append(part, 0, count);
    return text;
  }

  qz_test::TempDir folder_;
  SetEnv path_{"PATH", folder_.path() + ":" + std::getenv("PATH")};
};

TEST_F(JournalLogTest, Lines_AreThoseThatJournalctlExports) {
  journalctl_is(R"(printf '%s\n' "$@" > ")" + folder_.path("arguments") + R"("
printf 'QZLOG_ENTRY={"id":1}\nMESSAGE=a\n\nQZLOG_ENTRY={"id":2}\n\n')");
  for (const std::size_t piece : {1U, 5U, 1000U}) {
    JournalLog log(JournalAddress{});
    EXPECT_EQ(read_all(log, piece), "{\"id\":1}\n{\"id\":2}\n");
  }
  EXPECT_EQ(folder_.read("arguments"),
            "--quiet\n--no-pager\n--output=export\n--output-fields=QZLOG_ENTRY\n_TRANSPORT=journal\n");
  JournalLog log(JournalAddress{}, JournalLog::End::kNever);
  read_all(log, 100);
  EXPECT_EQ(folder_.read("arguments"),
            "--quiet\n--no-pager\n--output=export\n--output-fields=QZLOG_ENTRY\n--follow\n--lines=all\n"
            "_TRANSPORT=journal\n");
}

TEST_F(JournalLogTest, JournalctlThatFails_IsAnInputThatCannotBeRead) {
  journalctl_is("printf 'QZLOG_ENTRY=1\\n\\n'; echo 'Failed to open files: Permission denied' >&2; exit 1");
  JournalLog log(JournalAddress{});
  char bytes[10];
  EXPECT_EQ(std::string(bytes, log.Read(bytes, sizeof(bytes))), "1\n");
  try {
    log.Read(bytes, sizeof(bytes));
    FAIL() << "no exception";
  } catch (const UnreadableInput& error) {
    EXPECT_STREQ(error.what(), "'journalctl' ended with the status 1: Failed to open files: Permission denied");
  }
}

TEST_F(JournalLogTest, JournalctlThatIsNotThere_NamesThePackage) {
  const SetEnv path("PATH", folder_.path());
  try {
    const JournalLog log(JournalAddress{});
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot run 'journalctl': No such file or directory; it comes with the package systemd");
  }
}

TEST_F(JournalLogTest, NamespaceThatNobodyHasBegun_IsToldWithTheNextStep) {
  journalctl_is("exit 0");
  try {
    const JournalLog log(JournalAddress{"no-such-namespace"});
    FAIL() << "no exception";
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(),
                 "there is no journal of the namespace 'no-such-namespace'; programs begin one that write to it "
                 "(journal_namespace = no-such-namespace) while systemd-journald@no-such-namespace.service runs");
  }
}

}  // namespace
