#include "tools/compiler/source/scalar_position.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

struct PlaceCase {
  const char* scalar;  // stands after "x: é, y: " in the source, in a flow mapping
  const char* found;   // a piece of the scalar's text
  std::uint32_t column;
};

TEST(PositionInScalar, PlacesInEveryStyle_AreSeenThroughQuotesAndEscapes) {
  const PlaceCase cases[] = {
      {"ab cd", "cd", 14},
      {"'a''b'", "b", 15},
      {"\"ab\"", "b", 13},
      {"\"\\n\\\"b\"", "b", 16},
      {"\"\\x41\\u6f22b\"", "b", 22},
      {"\"\\U0001F600b\"", "b", 22},
      {"\"漢é b\"", "b", 15},
      {"\"\\N\\_\\L\\Pb\"", "b", 20},
      {"'漢'", "漢", 12},
  };
  for (const PlaceCase& entry : cases) {
    const ParsedSource source("{x: é, y: " + std::string(entry.scalar) + "}");
    ASSERT_TRUE(source.parsed()) << entry.scalar;
    source.root().for_each_pair([&](const YamlNode& key, const YamlNode& value) {
      if (key.text() != "y") return;
      const SourcePosition place = ScalarPositions(source.text(), value).find(value.text().find(entry.found));
      EXPECT_EQ(place, (SourcePosition{1, entry.column})) << entry.scalar;
    });
  }
}

TEST(PositionInScalar, TextOverSeveralLines_FallsBackToItsBeginning) {
  for (const char* text :
       {"- \"a\n  b\"", "- 'a\n  b'", "- a\n  b", "- |\n  a b", "- \"a \\\n  b\"", "- \"a\u2028b\""}) {
    const ParsedSource source(text);
    ASSERT_TRUE(source.parsed()) << text;
    source.root().for_each_item([&](const YamlNode& item) {
      EXPECT_EQ(ScalarPositions(source.text(), item).find(item.text().find('b')), (SourcePosition{1, 3})) << text;
    });
  }
}

TEST(PositionInScalar, EndOfText_IsBehindTheLastCharacter) {
  const ParsedSource source("'ab'");
  ASSERT_TRUE(source.parsed());
  EXPECT_EQ(ScalarPositions(source.text(), source.root()).find(2), (SourcePosition{1, 4}));
}

TEST(PositionInScalar, PlacesInAnyOrder_AreTheSameAsOneByOne) {
  const ParsedSource source("\"a\\n\\u6f22b\\tc\"");
  ASSERT_TRUE(source.parsed());
  ScalarPositions positions(source.text(), source.root());
  const std::size_t size = source.root().text().size();
  for (std::size_t round = 0; round < 2; ++round) {
    for (std::size_t offset : {std::size_t{0}, std::size_t{1}, std::size_t{2}, size - 1, size}) {
      EXPECT_EQ(positions.find(offset), ScalarPositions(source.text(), source.root()).find(offset)) << offset;
    }
  }
}

}  // namespace
}  // namespace qzlog_compiler
