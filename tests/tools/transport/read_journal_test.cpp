// `qzlog render` and `qzlog stats` with --from journal, with a journalctl of the test's own.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/tools/transport/read_fixture.h"
#include "tests/tools/transport/running_command.h"

namespace qzlog_test {
namespace {

class ReadJournal : public ReadFixture {
 protected:
  void journalctl_is(const std::string& script) const {
    write("bin/journalctl", "#!/bin/sh\nprintf '%s ' \"$@\" > '" + folder_.path("arguments") + "'\n" + script + "\n");
    std::filesystem::permissions(folder_.path("bin/journalctl"), std::filesystem::perms::owner_all);
  }
  ReadJournal() { std::filesystem::create_directory(folder_.path("bin")); }
  static std::string exported(int number) {
    return R"(printf 'QZLOG_ENTRY={"id":1,"attributes":{"N":)" + std::to_string(number) + "}}\\nMESSAGE=x\\n\\n'; ";
  }
  qz_test::SetEnv path_{"PATH", folder_.path("bin") + ":" + std::getenv("PATH")};
};

TEST_F(ReadJournal, Entries_AreShownAndCounted) {
  journalctl_is(exported(1) + exported(2));
  EXPECT_EQ(render("--from journal").out, "1\n2\n");
  EXPECT_EQ(render("--from journal --tail 1").out, "2\n");
  EXPECT_EQ(run("$QZLOG stats --definitions d.yaml --json --from journal | jq .total.count").out, "2\n");
}

TEST_F(ReadJournal, WhatJournalctlSays_IsTold) {
  journalctl_is(exported(1) + "echo 'Failed to open files: Permission denied' >&2; exit 1");
  const CommandResult result = render("--from journal");
  EXPECT_EQ(result.out, "1\n");
  EXPECT_EQ(result.err,
            "qzlog: error: 'journalctl' ended with the status 1: Failed to open files: Permission denied\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(render("--from journal x").status, 2);
  EXPECT_NE(render("--from journal:a/b").err.find("is no namespace of the journal"), std::string::npos);
}

TEST_F(ReadJournal, FollowedJournal_IsShownAsItComes) {
  journalctl_is(exported(1) + "while [ ! -e '" + folder_.path("go") + "' ]; do sleep 0.05; done; " + exported(2) +
                "exec sleep 1000");
  RunningCommand reader(folder_.path(), "out",
                        {"render", "--no-icu", "--definitions", "d.yaml", "--from", "journal", "--follow"});
  EXPECT_TRUE(wait_until([&] { return folder_.has("out") && read("out") == "1\n"; })) << read("said");
  write("go", "");
  EXPECT_TRUE(wait_until([&] { return read("out") == "1\n2\n"; })) << read("said");
  EXPECT_EQ(reader.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
  EXPECT_NE(read("arguments").find("--follow"), std::string::npos);
}

TEST_F(ReadJournal, EnoughEntries_EndAJournalThatGoesOn) {
  journalctl_is("while :; do " + exported(7) + "done");
  const CommandResult result = render("--from journal --follow --head 3");
  EXPECT_EQ(result.out, "7\n7\n7\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
}  // namespace qzlog_test
