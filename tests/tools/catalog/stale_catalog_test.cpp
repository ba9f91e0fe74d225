#include <string>
#include <utility>

#include "tests/tools/catalog/source_messages.h"
#include "tests/tools/command_fixture.h"

namespace qzlog_catalog {
namespace {

using qzlog_test::CommandResult;

constexpr const char* kHint = "  hint: build the catalog again, with 'qzlog catalog build'\n";

/// Definitions that changed after their catalog was built.
class StaleCatalog : public qzlog_test::CommandFixture {
 protected:
  StaleCatalog() {
    write("storage.yaml", kSource);
    write("de.po", po_header("de") + po_message("FULL", "Disk {Name} is full", "Laufwerk {Name} ist voll"));
    write("fr.po", po_header("fr"));
    build();
  }

  /// With warnings where a translation is out of date as well.
  void build() const { EXPECT_EQ(run("$QZLOG catalog build storage.yaml --po de.po fr.po -o messages").status, 0); }
  void expect_success(const std::string& line) const {
    const CommandResult result = run(line);
    EXPECT_EQ(result.err, "") << line;
    EXPECT_EQ(result.status, 0) << line;
  }

  /// Replaces a text of the source.
  void change(const std::string& from, const std::string& to) const {
    std::string source = read("storage.yaml");
    const std::size_t at = source.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    write("storage.yaml", source.replace(at, from.size(), to));
  }

  /// What the rule says of the source, compiled for a path first where one is given.
  std::string found(const std::string& path = "", const std::string& options = "") const {
    std::string definitions = "storage.yaml";
    if (!path.empty()) {
      EXPECT_EQ(run("$QZLOG compile storage.yaml -o storage.ldf --path " + path).status, 0);
      definitions = "storage.ldf";
    }
    return run("$QZLOG check " + definitions + " --catalog messages " + options +
               " | grep --no-group-separator -A1 '\\[stale-catalog\\]'")
        .out;
  }

  static std::string finding(const std::string& bundle, const std::string& texts, const std::string& messages) {
    return "messages/" + bundle + ".res: warning: " + texts + " than the definitions have: " + messages +
           " [stale-catalog]\n" + kHint;
  }
  static std::string in_all_bundles(const std::string& texts, const std::string& messages) {
    return finding("root", texts, messages) + finding("de", texts, messages) + finding("fr", texts, messages);
  }

  const std::string kSource =
      "version: \"1.0\"\n"
      "entries:\n"
      "  - {id: 1, name: FULL, message: \"Disk {Name} is full\", attributes: [{name: Name, type: Char32}]}\n"
      "  - {id: 2, name: COUNT, message: \"{N} of '{{N}}'\", attributes: [{name: N, type: UInt2}]}\n"
      "  - {id: 3, name: WHEN, message: \"at {TIMESTAMP}\", message_id: when}\n"
      "  - {id: 4, name: AGAIN, message: \"at {TIMESTAMP}\", message_id: when}\n"
      "  - {id: 5, name: RAW, raw: \"raw %s%Name%\", attributes: [{name: Name, type: Char32}]}\n"
      "  - {id: 6, name: SILENT, message: \"\"}\n";
};

TEST_F(StaleCatalog, WhatWasBuiltNow_IsNotStale) {
  EXPECT_EQ(found(), "");
  EXPECT_EQ(found("icu"), "");
  EXPECT_EQ(found("both"), "");
  EXPECT_EQ(found("narrow"), "");
}

TEST_F(StaleCatalog, ChangedText_IsSaidOfEachLanguage) {
  change("is full", "has no free blocks");
  const std::string expected = in_all_bundles("1 message was built from another text", "'FULL' (entry 1)");
  EXPECT_EQ(found(), expected);
  EXPECT_EQ(found("icu"), expected);
  EXPECT_EQ(found("narrow"), expected);
  build();
  EXPECT_EQ(found(), "");
}

TEST_F(StaleCatalog, SeveralChangedTexts_AreCountedAndNamed) {
  change("is full", "has no free blocks");
  change("raw %s", "other %s");
  change("message: \"at", "message: \"since");
  change("message: \"at", "message: \"since");
  EXPECT_EQ(found(), in_all_bundles("3 messages were built from other texts",
                                    "'FULL' (entry 1), 'RAW' (entry 5), 'when' (entries 3, 4)"));
}

TEST_F(StaleCatalog, FormatOfAnAttribute_BelongsToTheText) {
  change("{N} of", "{N:C} of");
  EXPECT_EQ(found(), in_all_bundles("1 message was built from another text", "'COUNT' (entry 2)"));
  change("{N:C} of", "{N:d} of");
  EXPECT_EQ(found(), "");
  change("type: UInt2", "type: Float");
  change("{N:d} of", "{N} of");
  EXPECT_EQ(found(), in_all_bundles("1 message was built from another text", "'COUNT' (entry 2)"));
}

TEST_F(StaleCatalog, PlaceholderThatBecomesText_IsAChange) {
  change("'{{N}}'", "'{N}'");
  EXPECT_EQ(found(), in_all_bundles("1 message was built from another text", "'COUNT' (entry 2)"));
}

TEST_F(StaleCatalog, WhatReadersDoNotSee_IsNoChange) {
  change("{TIMESTAMP}", "{TIMESTAMP:D} {TIMESTAMP:T}");
  change("id: 1, name: FULL, ", "id: 1, name: FULL, word: 7, summary: other, ");
  EXPECT_EQ(found(), "");
}

TEST_F(StaleCatalog, EmptyText_CanBecomeStale) {
  change("message: \"\"", "message: \"not any more\"");
  EXPECT_EQ(found(), in_all_bundles("1 message was built from another text", "'SILENT' (entry 6)"));
  EXPECT_EQ(found("narrow"), found());
}

TEST_F(StaleCatalog, NewAndVanishedMessages_AreOtherFindings) {
  change("name: SILENT", "name: NEW");
  EXPECT_EQ(found(), "");
}

TEST_F(StaleCatalog, ManyMessages_AreNotAllNamed) {
  std::string source = "version: \"1.0\"\nentries:\n";
  for (int id = 1; id <= 9; ++id) {
    source += "  - {id: " + std::to_string(id) + ", name: E" + std::to_string(id) + ", message: \"old text\"}\n";
  }
  write("storage.yaml", source);
  build();
  for (int id = 1; id <= 9; ++id) change("old text", "new text");
  EXPECT_EQ(found(), in_all_bundles("9 messages were built from other texts",
                                    "'E1' (entry 1), 'E2' (entry 2), 'E3' (entry 3), 'E4' (entry 4), 'E5' (entry 5) "
                                    "and 4 more"));
}

TEST_F(StaleCatalog, OneLanguageThatWasNotBuiltAgain_IsNamedAlone) {
  expect_success("cp messages/fr.res old.res");
  change("is full", "has no free blocks");
  build();
  expect_success("cp old.res messages/fr.res");
  EXPECT_EQ(found(), finding("fr", "1 message was built from another text", "'FULL' (entry 1)"));
}

TEST_F(StaleCatalog, ExitStatus_IsThatOfAWarning) {
  write("storage.yaml", "version: \"1.0\"\nentries: [{id: 1, name: A, message: \"text\"}]\n");
  write("de.po", po_header("de") + po_message("A", "text", "Text"));
  expect_success("$QZLOG catalog build storage.yaml --po de.po -o one");
  expect_success("$QZLOG check storage.yaml --catalog one --strict");
  change("text", "words");
  EXPECT_EQ(run("$QZLOG check storage.yaml --catalog one").status, 0);
  EXPECT_EQ(run("$QZLOG check storage.yaml --catalog one --strict").status, 1);
}

TEST_F(StaleCatalog, Explain_SaysWhichTextsAreOld) {
  change("is full", "has no free blocks");
  const std::string told = run("$QZLOG explain FULL --definitions storage.yaml --catalog messages").out;
  EXPECT_NE(told.find("  de           Laufwerk {Name} ist voll        (built from another text)\n"), std::string::npos)
      << told;
  const std::string json = run("$QZLOG explain FULL --definitions storage.yaml --catalog messages --json").out;
  EXPECT_NE(json.find("\"text\": \"Laufwerk {Name} ist voll\",\n          \"stale\": true\n"), std::string::npos)
      << json;
  build();
  EXPECT_EQ(run("$QZLOG explain FULL --definitions storage.yaml --catalog messages").out.find("another"),
            std::string::npos);
}

// A bundle made by hand, or before bundles said what they were built from.
TEST_F(StaleCatalog, BundleThatDoesNotSay_IsNotStale) {
  write("fr.txt", "fr { STRING_TABLE { FULL { \"x %s%Name%\" } when { \"y\" } } }\n");
  expect_success("genrb --quiet --destdir messages fr.txt >/dev/null");
  change("is full", "has no free blocks");
  EXPECT_EQ(found().find("fr.res"), std::string::npos);
  EXPECT_NE(found().find("de.res"), std::string::npos);
}

}  // namespace
}  // namespace qzlog_catalog
