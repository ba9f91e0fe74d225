// Catalog files of journald, as journald itself reads them.
#include <string>

#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

constexpr std::string_view kHostileSource =
    "version: \"1.0\"\n"
    "product: storage\n"
    "entries:\n"
    "  - {id: 1001, name: DISK_FULL, message: \"# disk\\n; full\\n\\n-- "
    "46ee974fa546c9c87e48e44566b63df1\\n\\x1Bend\"}\n"
    "  - {id: 1002, name: SITE_UP, message: \"Up since {TIMESTAMP}\"}\n"
    "  - {id: 1003, name: SILENT, message: \"\", summary: \"-- no message\"}\n";

class JournalCatalog : public qzlog_test::CommandFixture {
 protected:
  void make_catalog(const std::string& options) const {
    const CommandResult result = run("$QZLOG catalog journal storage.yaml -o root/usr/lib/systemd/catalog " + options);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
  /// What journald made of the files.
  std::string dumped() const {
    const CommandResult result =
        run("journalctl --root=\"$PWD/root\" --update-catalog && journalctl --root=\"$PWD/root\" --dump-catalog");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    return result.out;
  }
};

TEST_F(JournalCatalog, Journald_TakesEveryEvent) {
  if (run("command -v journalctl").status != 0) GTEST_SKIP() << "journalctl is not installed";
  write("storage.yaml", kHostileSource);
  make_catalog("");
  EXPECT_EQ(dumped(),
            "-- 46ee974fa546c9c87e48e44566b63df1\n"
            "Subject: DISK_FULL (1001)\n"
            "Defined-By: storage\n"
            "\n"
            " # disk\n"
            " ; full\n"
            "\n"
            " -- 46ee974fa546c9c87e48e44566b63df1\n"
            "\\u001Bend\n"
            "\n"
            "-- dfe0b0d972f3b48f718ceefd0a4b3782\n"
            "Subject: SILENT (1003)\n"
            "Defined-By: storage\n"
            "\n"
            " -- no message\n"
            "\n"
            "-- ff882d1b4be831de5f5f09b9d923127c\n"
            "Subject: SITE_UP (1002)\n"
            "Defined-By: storage\n"
            "\n"
            "Up since {TIMESTAMP}\n"
            "\n");
}

TEST_F(JournalCatalog, FilesThatWouldNotChange_AreNotRewritten) {
  write("storage.yaml", kHostileSource);
  make_catalog("");
  EXPECT_EQ(run("touch -d @1000000000 root/usr/lib/systemd/catalog/*").status, 0);
  make_catalog("");
  EXPECT_EQ(run("stat -c %Y root/usr/lib/systemd/catalog/*").out, "1000000000\n");
}

}  // namespace
