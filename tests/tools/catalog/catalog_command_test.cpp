#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/tools/catalog/source_messages.h"
#include "tests/tools/command_fixture.h"

namespace qzlog_catalog {
namespace {

using qzlog_test::CommandResult;

/// The built command from a source to messages that readers see.
class CatalogCommand : public qzlog_test::CommandFixture {
 protected:
  CatalogCommand() {
    write("storage.yaml", qzlog_test::kStorageSource);
    write("entries.jsonl",
          "{\"id\":1001,\"attributes\":{\"Name\":\"vol1\",\"Free\":0,\"Total\":4096}}\n"
          "{\"id\":1001,\"attributes\":{\"Name\":\"vol1\",\"Reason\":10}}\n"
          "{\"id\":1001,\"attributes\":{\"Name\":\"vol1\",\"Reason\":11}}\n");
    write("de.po", kGerman);
  }

  std::string rendered(const std::string& locale) const {
    const CommandResult result =
        run("$QZLOG render --definitions storage.yaml --catalog messages --locale " + locale + " entries.jsonl");
    EXPECT_EQ(result.err, "");
    return result.out;
  }

  void expect_success(const std::string& line) const {
    const CommandResult result = run(line);
    EXPECT_EQ(result.err, "") << line;
    EXPECT_EQ(result.status, 0) << line;
  }

  /// A file that is replaced becomes another one.
  ino_t inode(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(::stat((folder_.path() / name).c_str(), &status), 0) << name;
    return status.st_ino;
  }

  const std::string kGerman =
      po_header("de") +
      po_message("DISK_FULL", "Disk {Name} is full: {Free} of {Total} blocks free",
                 "Laufwerk {Name} ist voll: {Free} von {Total} Blöcken sind frei") +
      "#, fuzzy\n" + po_message("disk.full.quota", "The quota of {Name} is used up", "Das Kontingent von {Name}") +
      po_message("disk.full.lock", "{Name} is locked", "");
};

TEST_F(CatalogCommand, TranslatedMessage_IsRenderedAndOthersShowTheSourceText) {
  expect_success("$QZLOG catalog build storage.yaml --po de.po -o messages");
  EXPECT_EQ(rendered("de_DE"),
            "Laufwerk vol1 ist voll: 0 von 4096 Blöcken sind frei\nThe quota of vol1 is used up\nvol1 is locked\n");
  EXPECT_EQ(rendered("en_US"),
            "Disk vol1 is full: 0 of 4096 blocks free\nThe quota of vol1 is used up\nvol1 is locked\n");
}

TEST_F(CatalogCommand, FromExtractToBuild_EveryTextIsKept) {
  expect_success("$QZLOG catalog extract storage.yaml -o messages.pot --update fr.po");
  expect_success("sed -i '/^msgid \"{Name} is locked\"/{n;s|\"\"|\"{Name} est verrouillé\"|}' fr.po");
  expect_success("$QZLOG catalog build storage.yaml --po fr.po de.po -o messages");
  EXPECT_EQ(rendered("fr_FR"),
            "Disk vol1 is full: 0 of 4096 blocks free\nThe quota of vol1 is used up\nvol1 est verrouillé\n");
}

// Without a bundle of their own, ICU would show them the language of the host.
TEST_F(CatalogCommand, ReadersOfTheSourceLanguage_OnAForeignHost_GetTheSourceTexts) {
  expect_success("$QZLOG catalog build storage.yaml --po de.po -o messages");
  const CommandResult result = run(
      "LC_ALL=de_DE.UTF-8 $QZLOG render --definitions storage.yaml --catalog messages --locale en_GB entries.jsonl");
  EXPECT_EQ(result.out.substr(0, 14), "Disk vol1 is f");
}

TEST_F(CatalogCommand, SecondBuild_RewritesNothing) {
  expect_success("$QZLOG catalog build storage.yaml --po de.po -o messages");
  const ino_t german = inode("messages/de.res");
  const ino_t root = inode("messages/root.res");
  expect_success("$QZLOG catalog build storage.yaml --po de.po -o messages");
  EXPECT_EQ(inode("messages/de.res"), german);
  EXPECT_EQ(inode("messages/root.res"), root);
}

TEST_F(CatalogCommand, SecondUpdate_RewritesNothing) {
  expect_success("$QZLOG catalog extract storage.yaml -o messages.pot --update de.po fr.po");
  const ino_t po_template = inode("messages.pot");
  const ino_t german = inode("de.po");
  const ino_t french = inode("fr.po");
  expect_success("$QZLOG catalog extract storage.yaml -o messages.pot --update de.po fr.po");
  EXPECT_EQ(inode("messages.pot"), po_template);
  EXPECT_EQ(inode("de.po"), german);
  EXPECT_EQ(inode("fr.po"), french);
}

TEST_F(CatalogCommand, RefusedTranslation_LeavesTheOldCatalogAsItIs) {
  expect_success("$QZLOG catalog build storage.yaml --po de.po -o messages");
  const std::string before = rendered("de_DE");
  expect_success("sed -i 's/{Free} von/viele von/' de.po");
  EXPECT_EQ(run("$QZLOG catalog build storage.yaml --po de.po -o messages").status, 1);
  EXPECT_EQ(rendered("de_DE"), before);
}

TEST_F(CatalogCommand, FilesForTranslators_AreWhatGettextReads) {
  if (run("msgfmt --version").status != 0) GTEST_SKIP() << "gettext is not installed";
  expect_success("$QZLOG catalog extract storage.yaml -o messages.pot --update de.po fr.po");
  for (const char* const file : {"messages.pot", "de.po", "fr.po"}) {
    const CommandResult result = run("msgfmt --check --output-file=/dev/null " + std::string(file));
    EXPECT_EQ(result.status, 0) << result.err;
  }
  // gettext's own merge finds nothing to change, so translators may use it as well.
  expect_success(
      "cp de.po merged.po && msgmerge --quiet --update --backup=none --previous merged.po messages.pot 2>warnings");
  EXPECT_EQ(read("merged.po").substr(read("merged.po").find("#. DISK_FULL")),
            read("de.po").substr(read("de.po").find("#. DISK_FULL")));
}

TEST_F(CatalogCommand, PoFileOnStandardInput_IsBuilt) {
  expect_success("cat de.po | $QZLOG catalog build storage.yaml --po - -o messages");
  EXPECT_EQ(rendered("de_DE").substr(0, 13), "Laufwerk vol1");
}

TEST_F(CatalogCommand, FolderThatCannotBeMade_CannotRun) {
  write("messages", "a file");
  const CommandResult result = run("$QZLOG catalog build storage.yaml --po de.po -o messages/inside");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err.substr(0, 54), "qzlog: error: cannot make the folder 'messages/inside'");
}

TEST_F(CatalogCommand, Help_ShowsExamples) {
  for (const std::string command : {"catalog", "catalog extract", "catalog build", "catalog status"}) {
    const CommandResult result = run("$QZLOG " + command + " --help");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("Examples:\n  qzlog catalog "), std::string::npos) << result.out;
  }
}

}  // namespace
}  // namespace qzlog_catalog
