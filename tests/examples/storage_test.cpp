// The example product as its readers meet it: what its program, its demo and `qzlog render` print.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <fstream>
#include <ostream>
#include <regex>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"

namespace {

struct Output {
  int status;
  std::string out;
  std::string err;
};

/// Runs a line of shell in a folder of the test's own. The time zone and the language of the host may not show in what
/// is printed: they are unusual ones here.
Output run(const std::string& line) {
  const qz_test::TempDir folder;
  const qz_test::SetEnv command("QZLOG", QZLOG_COMMAND);
  const qz_test::SetEnv sources("SOURCES", QZLOG_STORAGE_SOURCES);
  const qz_test::SetEnv built("BUILT", QZLOG_STORAGE_BUILD);
  const qz_test::SetEnv locale("LC_ALL", "de_DE.UTF-8");
  const qz_test::SetEnv zone("TZ", "America/St_Johns");
  const std::string in_folder = "cd '" + folder.path() + "' && { " + line + "\n} >out 2>err </dev/null";
  const int status = std::system(in_folder.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, folder.read("out"), folder.read("err")};
}

struct GoldenCase {
  const char* name;  ///< of the golden file, without its extension
  const char* line;
};

void PrintTo(const GoldenCase& golden, std::ostream* out) { *out << golden.line; }

// The dates and times of the entries are Berlin's; the program sets its zone itself.
#define RENDER "TZ=Europe/Berlin $QZLOG render --definitions $BUILT/storage.ldf --aux $BUILT/storage_aux.ldf "
const GoldenCase kCases[] = {
    {"program", "$BUILT/storage_events $BUILT"},
    {"render-english", RENDER "--catalog $BUILT/messages --locale en_US $SOURCES/storage.jsonl"},
    {"render-german", RENDER "--catalog $BUILT/messages --locale de_DE $SOURCES/storage.jsonl"},
    {"render-japanese", RENDER "--catalog $BUILT/messages --locale ja_JP $SOURCES/storage.jsonl"},
    {"render-stored-texts", RENDER "--locale en_US $SOURCES/storage.jsonl"},
    {"render-narrow", RENDER "--no-icu $SOURCES/storage.jsonl"},
};
#undef RENDER

class StorageExample : public ::testing::TestWithParam<GoldenCase> {};

/// QZLOG_REWRITE_GOLDEN=1 writes what is printed now into the golden file; look at the difference before keeping it.
TEST_P(StorageExample, Run_PrintsTheGoldenFile) {
  const std::string golden = QZLOG_GOLDEN "/" + std::string(GetParam().name) + ".txt";
  const Output output = run(GetParam().line);
  EXPECT_EQ(output.err, "");
  EXPECT_EQ(output.status, 0);
  if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) std::ofstream(golden, std::ios::binary) << output.out;
  EXPECT_FALSE(output.out.empty());
  EXPECT_EQ(output.out, qz_test::read_file(golden));
}

INSTANTIATE_TEST_SUITE_P(Storage, StorageExample, ::testing::ValuesIn(kCases), [](const auto& parameter) {
  std::string name = parameter.param.name;
  for (char& letter : name) letter = letter == '-' ? '_' : letter;
  return name;
});

TEST(StorageSources, CompiledForBothPaths_BringNoWarning) {
  const Output output =
      run("$QZLOG compile $SOURCES/storage.yaml -o std.ldf --path both && "
          "$QZLOG compile $SOURCES/storage_aux.yaml --aux-of std.ldf -o aux.ldf --path both");
  EXPECT_EQ(output.out + output.err, "");
  EXPECT_EQ(output.status, 0);
}

TEST(StorageCatalogs, EveryLanguage_IsComplete) {
  const Output output =
      run("cd $SOURCES && $QZLOG catalog status storage.yaml storage_aux.yaml --po po --require-complete >/dev/null");
  EXPECT_EQ(output.err, "");
  EXPECT_EQ(output.status, 0);
}

// Whoever changes a message of the sources brings the translators' files up to date as well.
TEST(StorageCatalogs, TranslatorsFiles_AreUpToDate) {
  const Output output =
      run("cp -R $SOURCES/*.yaml $SOURCES/po . && "
          "$QZLOG catalog extract storage.yaml storage_aux.yaml -o po/storage.pot --update po/*.po && "
          "diff -r $SOURCES/po po");
  EXPECT_EQ(output.out + output.err, "");
  EXPECT_EQ(output.status, 0);
}

TEST(StorageProgram, UnknownSection_ShowsItsUsage) {
  const Output output = run("$BUILT/storage_events $BUILT nonsense");
  EXPECT_EQ(output.status, 2);
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(output.err,
            "Usage: storage_events FOLDER [SECTION...]\n"
            "       storage_events keep FOLDER SINKS.conf\n"
            "Sections: entries attributes messages choices refusals auxiliary\n");
}

TEST(StorageProgram, FolderWithoutDefinitions_SaysWhatIsMissing) {
  const Output output = run("$BUILT/storage_events nowhere");
  EXPECT_EQ(output.status, 1);
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(output.err,
            "storage_events: <QZX_logging_invalid_definition> Unable to access definition file "
            "\"nowhere/storage.ldf\".\n");
}

// The folder logs is not there.
TEST(StorageProgram, SinksThatCannotBeOpened_SaysWhichAndWhy) {
  const Output output = run("$BUILT/storage_events keep $BUILT $SOURCES/sinks.conf");
  EXPECT_EQ(output.status, 1);
  EXPECT_EQ(output.out, "");
  EXPECT_TRUE(
      std::regex_match(output.err, std::regex("storage_events: .*/sinks\\.conf:10: The log file logs/.* cannot be "
                                              "opened: No such file or directory\n")))
      << output.err;
}

// Where one goes on as files grow, its reader leaves.
TEST(StorageCommand, ExamplesOfItsHelp_Run) {
  const Output output = run(
      "cp -R $SOURCES/storage.yaml $BUILT/storage.ldf $BUILT/messages . && mkdir logs host1 host2 host3 counts && "
      "cp storage.ldf old.ldf && cp storage.ldf new.ldf && cp $BUILT/storage_aux.ldf site.ldf && "
      "head -25 $SOURCES/storage.jsonl | tee entries.jsonl logs/a.jsonl host1/a.jsonl host2/a.jsonl >host3/a.jsonl && "
      "printf '[disk]\nLogLevelLow = 5\n\n' >log.conf && "
      "{ $QZLOG render --help && $QZLOG stats --help; } | sed -n 's/^  qzlog /$QZLOG /p' >examples && "
      "while IFS= read -r example; do\n"
      "  example=${example%% | *}\n"
      "  case $example in *--follow*) example=\"$example | head -1\" ;; esac\n"
      "  eval \"$example\" >shown 2>errors </dev/null || { echo \"$example\"; cat errors; }\n"
      "done <examples\n"
      "grep -c -e '--definitions' examples >&2");
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(output.err, "25\n");
}

TEST(StorageDemo, BuiltTree_ShowsEveryStepWithItsTime) {
  const Output output = run("$SOURCES/demo.sh " QZLOG_BUILD_DIR);
  EXPECT_EQ(output.status, 0);
  for (const char* const shown : {"$ qzlog compile storage.yaml -o storage.ldf\n-- ", "$ storage_events . messages\n",
                                  "--locale en_US\nThe self-test of filer-1", "--locale de_DE\nSelbsttest von filer-1",
                                  "--locale ja_JP\nfiler-1 のセルフテスト", "--no-icu\nSelf-test of filer-1",
                                  "\nEntries written: 132, failed: 0, left: 0\n", "warning ENTRIES_HELD_BACK: ",
                                  "\nstorage.2", "\n 1102  DISK_TEMPERATURE         60   45.5 %  ",
                                  "\n    20      4       4    17408   20480  26624    26624  22016",
                                  " Snapshots leave only 23552 MiB free on volume projects\n",
                                  "\nen_US  Disk 7 in shelf 2", "\nja_JP  シェルフ 2 のディスク 7"}) {
    EXPECT_NE(output.out.find(shown), std::string::npos) << shown << "\nis not in\n" << output.out;
  }
  const std::string no_gaps = "seq: 132 lines of 1 writer, 0 missing, 0 doubled\n";
  EXPECT_NE(output.err.find(no_gaps), std::string::npos) << output.err;
}

}  // namespace
