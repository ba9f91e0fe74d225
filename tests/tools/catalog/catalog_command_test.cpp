#include <sys/stat.h>

#include <filesystem>
#include <map>
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
    EXPECT_EQ(::stat(folder_.path(name).c_str(), &status), 0) << name;
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

TEST_F(CatalogCommand, SourceWithAnOddName_GivesFilesThatCanBeUpdated) {
  for (const std::string name : {"./storage.yaml", "my storage.yaml", "a:3", "line\nbreak", "\xFF.yaml"}) {
    write(name, qzlog_test::kStorageSource);
    write("odd.po", kGerman);
    const std::string line = "$QZLOG catalog extract './" + name + "' --update odd.po";
    expect_success(line);
    const std::string updated = read("odd.po");
    expect_success(line);
    EXPECT_EQ(read("odd.po"), updated) << name;
    EXPECT_NE(updated.find("Laufwerk"), std::string::npos) << name;
  }
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

/// A catalog of several languages under construction, on hosts where something is used up.
class CatalogCommandInNeed : public CatalogCommand {
 protected:
  CatalogCommandInNeed() {
    expect_success("$QZLOG catalog extract storage.yaml --update fr.po");
    write("more.yaml", std::string(qzlog_test::kStorageSource) + "  - {id: 2001, name: MORE, message: \"" +
                           std::string(600, 'x') + "\"}\n");
  }

  std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
      const std::string name = std::filesystem::relative(entry.path(), folder_.path()).string();
      if (entry.is_regular_file() && !name.starts_with("std")) files.emplace(name, read(name));
    }
    return files;
  }

  /// What is there after the command where nothing is used up.
  std::map<std::string, std::string> files_after(const std::string& line, const std::string& undo) const {
    expect_success(line);
    std::map<std::string, std::string> after = files();
    expect_success(undo);
    return after;
  }
};

TEST_F(CatalogCommandInNeed, FilesOfLimitedSize_AreNotReplacedByTheirBeginnings) {
  const auto before = files();
  const std::string line = "$QZLOG catalog extract more.yaml --update de.po fr.po";
  const auto after = files_after(line, "true");
  ASSERT_NE(before, after);
  for (const auto& [name, content] : before) write(name, content);
  // In blocks of 512 bytes. The signal of the limit is ignored here, as it is where a service is started so.
  for (int blocks = 0; blocks < 10; ++blocks) {
    const CommandResult result =
        run("(trap '' XFSZ; ulimit -f " + std::to_string(blocks) + "; " + line + " 2>&1) | cat");
    if (result.out.empty()) {
      EXPECT_EQ(files(), after) << blocks;
      return;
    }
    EXPECT_EQ(files(), before) << blocks << result.out;
  }
  FAIL() << "no limit was large enough";
}

TEST_F(CatalogCommandInNeed, PoFileThatCannotBeMade_GivesStatus1) {
  const CommandResult result = run("ulimit -f 3; $QZLOG catalog extract more.yaml --update de.po");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err.substr(0, 76), "qzlog: error: cannot make a PO file: libgettextpo has not written all of it,");
}

TEST_F(CatalogCommandInNeed, FullTemporaryFolder_DoesNotMatterToPoFiles) {
  const std::string line = "$QZLOG catalog extract more.yaml --update de.po fr.po";
  expect_success("TMPDIR=/nowhere " + line);
  EXPECT_NE(read("de.po").find("\"MORE\""), std::string::npos);
}

// With fewer descriptors than are needed a language must not be left out.
TEST_F(CatalogCommandInNeed, FewDescriptors_GiveEverythingOrAnError) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers need descriptors and /proc themselves";
#endif
  const auto before = files();
  const std::string line = "$QZLOG catalog build storage.yaml --po de.po fr.po -o messages";
  const auto after = files_after(line, "rm -r messages");
  int succeeded = 0;
  for (int descriptors = 3; descriptors < 16; ++descriptors) {
    const CommandResult result = run("ulimit -n " + std::to_string(descriptors) + "; exec " + line);
    if (result.status == 0) {
      ++succeeded;
      EXPECT_EQ(files(), after) << descriptors;
    } else {
      EXPECT_NE(result.err, "") << descriptors;
      EXPECT_EQ(files(), before) << descriptors;
    }
    expect_success("rm -rf messages");
  }
  EXPECT_GT(succeeded, 0);
}

TEST_F(CatalogCommandInNeed, FewDescriptorsForFilesOfTranslators_GiveAllOfThemOrAnError) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers need descriptors and /proc themselves";
#endif
  const auto before = files();
  const std::string line = "$QZLOG catalog extract more.yaml -o all.pot --update de.po fr.po";
  const auto after = files_after(line, "rm all.pot");
  for (const auto& [name, content] : before) write(name, content);
  constexpr int kNotLoaded = 127;  // the system needs some to load the command
  for (int descriptors = 4;; ++descriptors) {
    ASSERT_LT(descriptors, 16) << "no limit was large enough";
    const CommandResult result = run("ulimit -n " + std::to_string(descriptors) + "; exec " + line);
    if (result.status == kNotLoaded) continue;
    if (result.status == 0) break;
    EXPECT_EQ(result.status, 2) << descriptors << result.err;
    EXPECT_NE(result.err.find("Too many open files"), std::string::npos) << descriptors << result.err;
    EXPECT_EQ(files(), before) << descriptors;
  }
  EXPECT_EQ(files(), after);
}

TEST_F(CatalogCommandInNeed, SigchldIgnoredByTheParent_GenrbRunsAllTheSame) {
  expect_success("env --ignore-signal=CHLD $QZLOG catalog build storage.yaml --po de.po -o messages");
  EXPECT_EQ(rendered("de_DE").substr(0, 13), "Laufwerk vol1");
}

TEST_F(CatalogCommandInNeed, SignalWhileGenrbRuns_EndsBothAndLeavesNothing) {
  write("slow", "#!/bin/sh\necho $$ >started\nexec tail -f /dev/null\n");
  expect_success("chmod +x slow; mkfifo started; mkdir temporary");
  for (const std::string signal : {"TERM", "HUP", "USR1"}) {
    const CommandResult result =
        run("TMPDIR=$PWD/temporary $QZLOG catalog build storage.yaml --po de.po -o messages --genrb ./slow & "
            "read genrb <started; kill -" +
            signal + " $!; wait $!; kill -l $?; kill -0 $genrb 2>/dev/null && echo alive");
    EXPECT_EQ(result.out, signal + "\n");
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path("temporary"))) << signal;
    EXPECT_FALSE(std::filesystem::exists(folder_.path("messages"))) << signal;
  }
}

TEST_F(CatalogCommandInNeed, HostWithoutProc_IsAnErrorThatSaysSo) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers need descriptors and /proc themselves";
#endif
  if (run("unshare --mount true").status != 0) GTEST_SKIP() << "mounts cannot be separated here";
  const auto before = files();
  const CommandResult result =
      run("unshare --mount sh -c 'mount -t tmpfs none /proc && $QZLOG catalog extract more.yaml --update de.po'");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find(", for which /proc has to be mounted: "), std::string::npos) << result.err;
  EXPECT_EQ(files(), before);
}

TEST_F(CatalogCommandInNeed, FullDiskOfTheResult_LeavesTheFilesAsTheyWere) {
  if (run("unshare --mount true").status != 0) GTEST_SKIP() << "mounts cannot be separated here";
  expect_success("mkdir full");
  const CommandResult result = run(
      "unshare --mount sh -c 'mount -t tmpfs -o size=16k none full && cp de.po fr.po full && "
      "head -c 8192 /dev/zero >full/rest; $QZLOG catalog extract more.yaml --update full/de.po full/fr.po; echo $?; "
      "cmp de.po full/de.po && cmp fr.po full/fr.po && ls -A full'");
  EXPECT_EQ(result.out, "2\nde.po\nfr.po\nrest\n") << result.err;
  EXPECT_EQ(result.err, "qzlog: error: cannot write 'full/de.po': No space left on device\n");
}

TEST_F(CatalogCommand, Help_ShowsExamples) {
  for (const std::string command :
       {"catalog", "catalog extract", "catalog build", "catalog status", "catalog journal"}) {
    const CommandResult result = run("$QZLOG " + command + " --help");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("Examples:\n  qzlog catalog "), std::string::npos) << result.out;
  }
}

}  // namespace
}  // namespace qzlog_catalog
