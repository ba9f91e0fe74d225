#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/catalog/bundle_fixture.h"
#include "tests/tools/catalog/source_messages.h"
#include "tests/tools/compiler/rendering_oracle.h"
#include "tools/catalog/catalog_build.h"
#include "tools/catalog/catalog_extract.h"
#include "tools/catalog/language_catalog.h"

namespace qzlog_catalog {
namespace {

const rendering_oracle::Values kValues = {
    {"A", {{'s', "v'1{0}%s%A%''"}}},
    {"Free", {{'d', "42"}, {'P', "4200%"}}},
    {"TIMESTAMP", {{'D', "21 Nov"}, {'T', "8 o'clock"}}},
};

struct Text {
  std::string written;
  std::string expected;
};

class TextMaker {
 public:
  explicit TextMaker(qz_test::SeededRandom& random) : random_(random) {}

  /// A text with the references {A}, {Free:P} and {TIMESTAMP} in one of the two orders, and anything in between.
  Text make(bool reversed) {
    Text text;
    if (random_.one_in(8)) add(text, "%", "%");
    add_literal(text, 0);
    add(text, reversed ? "{TIMESTAMP:D} {TIMESTAMP:T}" : "{A}", reversed ? "21 Nov 8 o'clock" : "v'1{0}%s%A%''");
    add_literal(text, 1);
    add(text, "{Free:P}", "4200%");
    add_literal(text, 1);
    add(text, reversed ? "{A:s}" : "{TIMESTAMP}", reversed ? "v'1{0}%s%A%''" : "21 Nov 8 o'clock");
    add_literal(text, 0);
    return text;
  }

 private:
  static void add(Text& text, const std::string& written, const std::string& expected) {
    text.written += written;
    text.expected += expected;
  }

  void add_literal(Text& text, long long least) {
    static const std::string kCharacters[] = {"{", "}", "'",  "'",  "a",  " ",      "é", "漢",      "😀", "\n",
                                              "#", "|", "\\", "\"", "\t", "\uFEFF", "_", "\\u0041", "//"};
    for (long long i = random_.between(least, 6); i > 0; --i) {
      const std::string& character = kCharacters[random_.between(0, std::size(kCharacters) - 1)];
      add(text, character == "{" || character == "}" ? character + character : character, character);
    }
  }

  qz_test::SeededRandom& random_;
};

std::string source_of(const std::vector<Text>& texts) {
  std::string source = "version: \"1.0\"\nglobals: [{name: A, type: Char64}, {name: Free, type: UInt4}]\nentries:\n";
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    source += "  - {id: " + number + ", name: E" + number + ", message: " + yaml_text(texts[i].written) + "}\n";
  }
  return source;
}

// The text that an author or a translator writes is the text that a reader sees.
TEST(RandomTexts, ThroughTranslatorsFilesAndCatalogs_ReadersSeeThemUnchanged) {
  qz_test::SeededRandom random;
  TextMaker maker(random);
  std::vector<Text> texts;
  std::vector<Text> translations;
  for (int i = 0; i < 2000; ++i) {
    texts.push_back(maker.make(false));
    translations.push_back(maker.make(true));
  }
  const CatalogMessages messages = messages_of({{"s.yaml", source_of(texts)}});
  const PoFile po_template = make_template(messages, "test");
  PoFile german = update_po(begin_language(po_template, "de"), po_template);
  for (std::size_t i = 0; i < texts.size(); ++i) german.messages[i + 1].translation = translations[i].written;
  Findings findings;
  const std::vector<PoText> files = {{"de.po", write_po(german)}};
  const std::vector<LanguageCatalog> catalogs = make_catalogs(messages, files, findings);
  ASSERT_EQ(printed(findings), "");
  ASSERT_EQ(catalogs.at(0).counts.translated, texts.size());
  const CatalogFolder catalog(bundle_sources(messages, catalogs, "en"));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string id = "E" + std::to_string(i + 1);
    const std::optional<std::string> source = catalog.text(id, "en_US");
    const std::optional<std::string> translation = catalog.text(id, "de_DE");
    ASSERT_TRUE(source && translation) << id;
    ASSERT_EQ(rendering_oracle::render_icu(*source, kValues), texts[i].expected) << texts[i].written;
    ASSERT_EQ(rendering_oracle::render_icu(*translation, kValues), translations[i].expected) << translations[i].written;
  }
}

}  // namespace
}  // namespace qzlog_catalog
