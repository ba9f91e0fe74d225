#include "tools/compiler/source/yaml_tree.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

/// The tree as text: kinds, texts and positions.
std::string outline(const YamlNode& node) {
  const std::string place = std::to_string(node.position().line) + ":" + std::to_string(node.position().column);
  if (node.kind() == YamlKind::kScalar) return std::string(node.text()) + "@" + place;
  std::string inside;
  if (node.kind() == YamlKind::kSequence) {
    node.for_each_item([&](const YamlNode& item) { inside += outline(item) + " "; });
    return "[ " + inside + "]@" + place;
  }
  node.for_each_pair(
      [&](const YamlNode& key, const YamlNode& value) { inside += outline(key) + "=" + outline(value) + " "; });
  return "{ " + inside + "}@" + place;
}

TEST(ParseYaml, ListsAndMappings_KeepOrderAndPositions) {
  const ParsedSource source("a: 1\nb:\n  - {x: y, x: z}\n  - []\n");
  ASSERT_TRUE(source.parsed());
  EXPECT_EQ(outline(source.root()), "{ a@1:1=1@1:4 b@2:1=[ { x@3:6=y@3:9 x@3:12=z@3:15 }@3:5 [ ]@4:5 ]@3:3 }@1:1");
}

TEST(ParseYaml, Scalars_KeepTheirTextAndStyle) {
  const ParsedSource source("- 010\n- '010'\n- \"0\\x310\"\n- |\n  010\n");
  ASSERT_TRUE(source.parsed());
  std::vector<std::pair<std::string, ScalarStyle>> scalars;
  source.root().for_each_item([&](const YamlNode& item) { scalars.emplace_back(item.text(), item.style()); });
  const std::vector<std::pair<std::string, ScalarStyle>> expected = {{"010", ScalarStyle::kPlain},
                                                                     {"010", ScalarStyle::kSingleQuoted},
                                                                     {"010", ScalarStyle::kDoubleQuoted},
                                                                     {"010\n", ScalarStyle::kBlock}};
  EXPECT_EQ(scalars, expected);
}

TEST(ParseYaml, ColumnsAfterLongCharacters_CountCharacters) {
  const ParsedSource source("{漢字: x, y: z}");
  ASSERT_TRUE(source.parsed());
  EXPECT_EQ(outline(source.root()), "{ 漢字@1:2=x@1:6 y@1:9=z@1:12 }@1:1");
  std::size_t offset = 0;
  source.root().for_each_pair([&](const YamlNode&, const YamlNode& value) { offset = value.source_offset(); });
  EXPECT_EQ(source.text()[offset], 'z');
}

TEST(ParseYaml, EmptySource_IsOneEmptyScalar) {
  for (const char* text : {"", "\n", "# nothing\n", "---\n"}) {
    const ParsedSource source(text);
    ASSERT_TRUE(source.parsed()) << text;
    EXPECT_EQ(source.root().kind(), YamlKind::kScalar);
    EXPECT_EQ(source.root().text(), "");
  }
}

TEST(ParseYaml, ViewWithoutData_IsOneEmptyScalar) {
  Findings diagnostics("source.yaml");
  const std::optional<YamlTree> tree = parse_yaml(std::string_view(), diagnostics);
  ASSERT_TRUE(tree.has_value());
  EXPECT_EQ(tree->root().text(), "");
}

TEST(ParseYaml, CarriageReturnLineFeed_IsOneLineEnd) {
  const ParsedSource source("a: 1\r\nb: 2\r\n");
  ASSERT_TRUE(source.parsed());
  EXPECT_EQ(outline(source.root()), "{ a@1:1=1@1:4 b@2:1=2@2:4 }@1:1");
}

struct RefusalCase {
  std::string text;
  const char* diagnostics;
};

TEST(ParseYaml, WhatIsNoDefinitionSource_IsRefusedWithItsPlace) {
  const RefusalCase cases[] = {
      {"a: [1,\n", "f:2:1: error: did not find expected node content while parsing a flow node [yaml-syntax]\n"},
      {"a: &x 1\nb: *x\n",
       "f:1:4: error: an anchor has no place in a definition source [yaml-feature]\n"
       "f:2:4: error: an alias has no place in a definition source [yaml-feature]\n"},
      {"a: !!str 1\n", "f:1:4: error: a tag has no place in a definition source [yaml-feature]\n"},
      {"a: 1\n---\nb: 2\n", "f:2:1: error: a second document has no place in a definition source [yaml-feature]\n"},
      {std::string(17, '['), "f:1:17: error: nested deeper than 16 levels [yaml-depth]\n"},
      {"a: x\nb: \xFFy\n", "f:2:4: error: the source is not UTF-8 from here on [invalid-utf8]\n"},
      {std::string("a: \0b\n", 6), "f:1:4: error: the character U+0000 cannot stand in a source [control-character]\n"},
      {"\xFF\xFE"
       "a",
       "f:1:1: error: the source is not UTF-8 from here on [invalid-utf8]\n"},
  };
  for (const RefusalCase& entry : cases) {
    ParsedSource source(entry.text);
    EXPECT_FALSE(source.parsed());
    EXPECT_EQ(source.printed_diagnostics(), entry.diagnostics);
  }
}

TEST(ParseYaml, EveryControlCharacter_IsReportedOnce) {
  ParsedSource source("\x01\r\x02\r\n\x7F\uFEFF");
  EXPECT_FALSE(source.parsed());
  const std::string text = source.printed_diagnostics();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
  EXPECT_NE(text.find("f:3:2: error: the character U+FEFF"), std::string::npos) << text;
}

TEST(ParseYaml, DeeplyNestedBrackets_AreRefusedQuickly) {
  ParsedSource source(std::string(4 << 20, '['));
  EXPECT_FALSE(source.parsed());
  EXPECT_EQ(source.printed_diagnostics(), "f:1:17: error: nested deeper than 16 levels [yaml-depth]\n");
}

TEST(ParseYaml, LineBreaksThatAreNotLineFeeds_CountAsLines) {
  for (const char* const line_break : {"\n", "\r", "\r\n", "\u0085", "\u2028", "\u2029"}) {
    ParsedSource source("a: x" + std::string(line_break) + "b: \x01\n");
    EXPECT_EQ(source.printed_diagnostics(),
              "f:2:4: error: the character U+0001 cannot stand in a source [control-character]\n");
  }
}

TEST(ParseYaml, MistakeAtAnEndWithoutALineBreak_IsReportedInTheLastLine) {
  ParsedSource source("a: 1\nb: [x");
  EXPECT_EQ(source.printed_diagnostics(),
            "f:2:6: error: did not find expected ',' or ']' while parsing a flow sequence [yaml-syntax]\n");
}

TEST(ParseYaml, SequencesAndMappings_KnowWhereTheyEnd) {
  ParsedSource source("list:\n  - {a: 1}\n  - b: 2\n    c: 3\nnext: 4\n");
  ASSERT_TRUE(source.parsed());
  std::vector<SourcePosition> begins;
  std::vector<SourcePosition> ends;
  source.root().for_each_pair([&](const YamlNode&, const YamlNode& value) {
    if (value.kind() != YamlKind::kSequence) return;
    value.for_each_item([&](const YamlNode& item) {
      begins.push_back(item.position());
      ends.push_back(item.end_position());
    });
  });
  EXPECT_EQ(begins, (std::vector<SourcePosition>{{2, 5}, {3, 5}}));
  ASSERT_EQ(ends.size(), 2U);
  EXPECT_EQ(ends[0], (SourcePosition{2, 11}));
  EXPECT_GT(ends[1], (SourcePosition{4, 7}));
  EXPECT_LE(ends[1], (SourcePosition{5, 1}));
}

}  // namespace
}  // namespace qzlog_compiler
