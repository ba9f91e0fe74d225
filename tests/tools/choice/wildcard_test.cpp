#include "tools/choice/wildcard.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/support.h"

namespace {

using qzlog_tool::Wildcard;

struct Case {
  const char* pattern;
  const char* text;
  bool matches;
};

TEST(Wildcard, Table) {
  const Case cases[] = {
      {"", "", true},
      {"", "a", false},
      {"a", "a", true},
      {"a", "", false},
      {"a", "ab", false},
      {"*", "", true},
      {"*", "abc", true},
      {"a*", "a", true},
      {"a*", "ba", false},
      {"*a", "bba", true},
      {"*a", "ab", false},
      {"a*c", "abc", true},
      {"a*c", "ac", true},
      {"a*c", "acb", false},
      {"?", "", false},
      {"?", "a", true},
      {"?", "ab", false},
      {"?", "\xC3\xA4", true},
      {"??", "\xC3\xA4", false},
      {"*?", "\xC3\xA4", true},
      {"*??", "\xC3\xA4", false},
      {"a*b*c", "a1b2b3c", true},
      {"**a**", "xax", true},
      {"*ab*", "aab", true},
      {"\\*", "*", true},
      {"\\*", "a", false},
      {"\\?", "?", true},
      {"\\\\", "\\", true},
      {"a\\", "a\\", true},
      {"vol*", "vol12", true},
      {"VOL*", "vol12", false},
      {"?\xC3\xA4*", "x\xC3\xA4y", true},
  };
  for (const Case& tested : cases) {
    EXPECT_EQ(Wildcard(tested.pattern).matches(tested.text), tested.matches) << tested.pattern << " " << tested.text;
  }
}

TEST(Wildcard, PlacesOfWildcards_CountAlone) {
  EXPECT_TRUE(Wildcard("a*b*", {3}).matches("a*bcd"));
  EXPECT_FALSE(Wildcard("a*b*", {3}).matches("axbcd"));
  EXPECT_FALSE(Wildcard("a*", {}).has_wildcards());
  EXPECT_TRUE(Wildcard("a*", {1}).has_wildcards());
}

/// Tries every way.
bool matches_slowly(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern.front() == '*') {
    return matches_slowly(pattern.substr(1), text) || (!text.empty() && matches_slowly(pattern, text.substr(1)));
  }
  if (text.empty()) return false;
  return (pattern.front() == '?' || pattern.front() == text.front()) &&
         matches_slowly(pattern.substr(1), text.substr(1));
}

TEST(Wildcard, RandomPatterns_MatchAsEveryWayTriedSays) {
  qz_test::SeededRandom random;
  int matches = 0;
  for (int round = 0; round < qz_test::rounds(40000); ++round) {
    std::string pattern(random.below(7), ' ');
    std::string text(random.below(9), ' ');
    for (char& character : pattern) character = "ab*?"[random.below(4)];
    for (char& character : text) character = "ab"[random.below(2)];
    const bool expected = matches_slowly(pattern, text);
    matches += expected;
    ASSERT_EQ(Wildcard(pattern).matches(text), expected) << pattern << " " << text;
  }
  EXPECT_GT(matches, qz_test::rounds(40000) / 10);
}

TEST(Wildcard, PatternThatInvitesToTryEverything_TakesNoLong) {
  std::string pattern;
  for (int i = 0; i < 1000; ++i) pattern += "*a";
  EXPECT_FALSE(Wildcard(pattern + "*b").matches(std::string(6000, 'a')));
}

}  // namespace
