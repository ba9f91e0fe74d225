#include "tools/inspect/yaml_text.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/random_stored_model.h"
#include "tools/compiler/source/yaml_tree.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

std::string read_back(const std::string& quoted_text) {
  Findings diagnostics("");
  const std::optional<YamlTree> tree = parse_yaml(quoted_text, diagnostics);
  return tree ? std::string(tree->root().text()) : "not YAML: " + quoted_text;
}

TEST(YamlQuoted, PlainText_StandsInDoubleQuotes) {
  EXPECT_EQ(yaml_quoted(""), "\"\"");
  EXPECT_EQ(yaml_quoted(" Größe: 'a' # {漢} "), "\" Größe: 'a' # {漢} \"");
}

TEST(YamlQuoted, CharactersThatYamlWouldChange_AreEscaped) {
  EXPECT_EQ(yaml_quoted("\"\\\n\r\t"), R"("\"\\\n\r\t")");
  EXPECT_EQ(yaml_quoted("\x01\x7F\u0085\u2028\u2029\uFEFF\uFFFE"), R"("\x01\x7F\x85\u2028\u2029\uFEFF\uFFFE")");
}

TEST(YamlQuoted, EveryCharacter_IsReadBack) {
  for (char32_t code = 1; code < 0x110000; code += code < 0x3000 ? 1 : 0x1FF) {
    if (code >= 0xD800 && code < 0xE000) continue;
    std::string text = "a";
    if (code < 0x80) {
      text += static_cast<char>(code);
    } else {
      for (std::size_t left = utf8_size(code); left > 0; --left) {
        const char32_t bits = code >> (6 * (left - 1));
        const bool lead = left == utf8_size(code);
        text += static_cast<char>(lead ? bits | (0xF00U >> utf8_size(code) & 0xFFU) : (bits & 0x3FU) | 0x80U);
      }
    }
    ASSERT_TRUE(is_utf8(text)) << static_cast<unsigned>(code);
    ASSERT_EQ(read_back(yaml_quoted(text)), text) << static_cast<unsigned>(code);
  }
}

TEST(YamlQuoted, RandomTexts_AreReadBack) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < 5000; ++round) {
    const std::string text = maker.text();
    ASSERT_EQ(read_back(yaml_quoted(text)), text);
  }
}

}  // namespace
}  // namespace qzlog_compiler
