#include "tools/catalog/language_catalog.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/tools/catalog/source_messages.h"

namespace qzlog_catalog {
namespace {

const SourceText kSource = {"s.yaml", R"(version: "1.0"
entries:
  - {id: 1, name: A, message: "first"}
  - {id: 2, name: B, message: "second"}
  - {id: 3, name: EMPTY, message: ""}
)"};

std::string fuzzy(const std::string& message) { return "#, fuzzy\n" + message; }

/// The stored texts by their IDs.
std::map<std::string, std::string> texts_of(const LanguageCatalog& catalog) {
  std::map<std::string, std::string> texts;
  for (const CatalogText& text : catalog.texts) texts[text.id] = text.stored;
  return texts;
}

TEST(MakeCatalogs, EveryMessage_HasATranslationOrItsSourceText) {
  const CatalogMessages messages = messages_of({kSource});
  Findings findings;
  const std::vector<PoText> files = {
      {"de.po", po_header("de") + po_message("A", "first", "erstens") + fuzzy(po_message("B", "second", "zweitens"))}};
  const std::vector<LanguageCatalog> catalogs = make_catalogs(messages, files, findings);
  ASSERT_EQ(catalogs.size(), 1u);
  EXPECT_EQ(texts_of(catalogs[0]), (std::map<std::string, std::string>{
                                       {"A", "erstens%_%TIMESTAMP%"}, {"B", "second%_%TIMESTAMP%"}, {"EMPTY", ""}}));
  EXPECT_EQ(catalogs[0].counts.translated, 1u);
  EXPECT_EQ(catalogs[0].counts.fuzzy, 1u);
  EXPECT_EQ(catalogs[0].counts.messages(), 2u);
}

TEST(MakeCatalogs, Languages_AreSortedWhateverTheFilesAreCalled) {
  const CatalogMessages messages = messages_of({kSource});
  Findings findings;
  const std::vector<PoText> files = {
      {"1.po", po_header("pt-BR")}, {"2.po", po_header("de")}, {"some/folder/fr.po", po_header("")}};
  const std::vector<LanguageCatalog> catalogs = make_catalogs(messages, files, findings);
  EXPECT_EQ(printed(findings), "");
  ASSERT_EQ(catalogs.size(), 3u);
  EXPECT_EQ(catalogs[0].language, "de");
  EXPECT_EQ(catalogs[1].language, "fr");
  EXPECT_EQ(catalogs[2].language, "pt_BR");
}

TEST(MakeCatalogs, BrokenFile_LeavesTheOthersInPlace) {
  const CatalogMessages messages = messages_of({kSource});
  Findings findings;
  const std::vector<PoText> files = {{"xx.po", po_header("xx")}, {"de.po", po_header("de")}};
  EXPECT_EQ(make_catalogs(messages, files, findings).size(), 1u);
  EXPECT_TRUE(findings.has_errors());
}

}  // namespace
}  // namespace qzlog_catalog
