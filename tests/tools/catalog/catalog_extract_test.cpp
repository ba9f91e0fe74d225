#include "tools/catalog/catalog_extract.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/catalog/source_messages.h"

namespace qzlog_catalog {
namespace {

/// A template of messages with these texts.
PoFile template_of(const std::map<std::string, std::string>& texts) {
  PoFile file;
  file.messages.emplace_back();
  file.messages.front().translation = "Language: \nContent-Type: text/plain; charset=UTF-8\n";
  for (const auto& [id, text] : texts) {
    PoMessage message;
    message.context = id;
    message.source = text;
    message.extracted_comments = "About " + id + ".\n";
    message.references = {{"f.yaml", 7}};
    file.messages.push_back(message);
  }
  return file;
}

const PoMessage* find(const PoFile& file, const std::string& id) {
  for (const PoMessage& message : file.messages) {
    if (message.context == id && !message.obsolete) return &message;
  }
  return nullptr;
}

PoFile reread(const PoFile& file) {
  Findings findings;
  std::optional<PoFile> result = parse_po(write_po(file), "f.po", findings);
  EXPECT_EQ(printed(findings), "");
  return result.value_or(PoFile());
}

TEST(BeginLanguage, Header_NamesTheLanguage) {
  const PoFile file = begin_language(template_of({{"a", "text"}}), "de");
  ASSERT_EQ(file.messages.size(), 1u);
  EXPECT_EQ(header_field(file.header()->translation, "Language"), "de");
}

TEST(UpdatePo, UntranslatedWithATranslatorsComment_KeepsTheComment) {
  PoFile old = update_po(begin_language(template_of({{"a", "text"}}), "de"), template_of({{"a", "text"}}));
  old.messages[1].comments = " What is this?\n";
  const PoFile updated = update_po(old, template_of({{"a", "other"}}));
  EXPECT_EQ(find(updated, "a")->comments, " What is this?\n");
  EXPECT_FALSE(find(updated, "a")->fuzzy);
}

TEST(UpdatePo, FuzzyWithoutAPreviousText_GetsTheOneItHad) {
  PoFile old = template_of({{"a", "old"}});
  old.messages[1].translation = "alt";
  old.messages[1].fuzzy = true;
  const PoFile updated = update_po(old, template_of({{"a", "new"}}));
  EXPECT_EQ(find(updated, "a")->previous_source, "old");
  EXPECT_TRUE(find(updated, "a")->fuzzy);
}

TEST(UpdatePo, ManyChanges_KeepEveryTranslationAndSettle) {
  qz_test::SeededRandom random;
  std::map<std::string, std::string> texts;
  PoFile file = begin_language(template_of(texts), "de");
  std::set<std::string> translations;  // all that was ever written; none may get lost
  for (int round = 0; round < 300; ++round) {
    const std::string id = "id" + std::to_string(random.between(0, 7));
    if (random.one_in(3)) {
      texts.erase(id);
    } else {
      texts[id] = "text " + std::to_string(random.between(0, 3));
    }
    const PoFile po_template = template_of(texts);
    file = reread(update_po(file, po_template));
    ASSERT_EQ(update_po(file, po_template).messages, file.messages) << "an update without a change has changed it";
    std::set<std::string> kept;
    for (PoMessage& message : file.messages) {
      if (message.is_header() || message.obsolete) {
        kept.insert(message.translation);
        continue;
      }
      ASSERT_EQ(texts.at(*message.context), message.source);
      // The translation names the text that it was made from. Once fuzzy, it stays so until a translator has looked.
      const bool current = message.translation.find(message.source + "/") == 0;
      if (!message.translation.empty() && !current) {
        ASSERT_TRUE(message.fuzzy) << message.translation;
        ASSERT_EQ(message.translation.find(message.previous_source.value() + "/"), 0u);
      }
      ASSERT_FALSE(message.translation.empty() && message.fuzzy);
      if (message.translation.empty() && random.one_in(2)) {
        message.translation = message.source + "/" + std::to_string(round);
        translations.insert(message.translation);
      }
      kept.insert(message.translation);
    }
    for (const std::string& translation : translations) ASSERT_TRUE(kept.contains(translation)) << translation;
    for (const auto& [known_id, text] : texts) ASSERT_NE(find(file, known_id), nullptr);
  }
}

}  // namespace
}  // namespace qzlog_catalog
