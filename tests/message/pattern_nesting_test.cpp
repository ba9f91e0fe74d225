#include "message/pattern_nesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/message/icu_templates.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

using namespace qzlog;

namespace qz_test {
namespace {

constexpr int kNoLimit = 1'000'000;

int bound(const icu::UnicodeString& pattern, int limit = kNoLimit) {
  return bound_pattern_nesting(pattern, UMSGPAT_APOS_DOUBLE_OPTIONAL, limit);
}

/// ICU's parts up to where it refused the pattern, if it did.
int nesting_of_parts(const icu::UnicodeString& pattern, UMessagePatternApostropheMode mode, UErrorCode& status) {
  icu::MessagePattern parsed(mode, status);
  parsed.parse(pattern, nullptr, status);
  return pattern_nesting(parsed);
}

struct NestingCase {
  const char16_t* pattern;
  int nesting;
};

TEST(PatternNesting, Patterns_ArgumentsAndMessagesThatIcuReads) {
  const NestingCase cases[] = {
      {u"", 0},
      {u"text } | # '", 0},
      {u"{0}", 1},
      {u"{0} {1,number} { 2 , date , short }", 1},
      {u"'{0}' '{' it''s {0} '}'", 1},
      {u"it's {0}", 1},
      {u"{0,number,{{'}'}}}", 1},
      {u"{0,select,other{x}}", 2},
      {u"{0,SELECT,a{x}other{{1}}}{2}", 3},
      {u"{0,plural,offset:1 =1{x}other{# '#{' {1,choice,0#a|1<b {2}}}}", 5},
      {u"{0, selectOrdinal ,other{'#}}'{1}}}", 3},
      {u"{0,select,other{'#}}'{1}}}", 2},  // not a plural: the apostrophe is text
      {u"{0,choice,0#a|1<b|2\u2264c}", 2},
      {u"{0,choice,0#'|}'{1,choice,0#'|}'{2}}}", 5},
      {u"{0,choice,0#|1#{1,choice,0#x|1#y}|2#{2}}", 4},
      {u"{0,choices,0#{1}}", 1},
      {u"{0,selectordinals,other{{1}}}", 1},
  };
  for (const NestingCase& nesting_case : cases) {
    UErrorCode status = U_ZERO_ERROR;
    EXPECT_EQ(nesting_of_parts(nesting_case.pattern, UMSGPAT_APOS_DOUBLE_OPTIONAL, status), nesting_case.nesting)
        << escaped(nesting_case.pattern);
    EXPECT_EQ(bound(nesting_case.pattern), nesting_case.nesting) << escaped(nesting_case.pattern);
  }
}

TEST(PatternNesting, BehindTheLimit_NotCountedOn) {
  icu::UnicodeString pattern;
  for (int i = 0; i < 5000; ++i) pattern += u"{0,choice,0#";
  EXPECT_EQ(bound(pattern), 10'000);
  for (const int limit : {0, 1, 100, 9999, 10'000}) {
    EXPECT_GE(bound(pattern, limit), std::min(limit + 1, 10'000));
    EXPECT_LE(bound(pattern, limit), limit + 2);
  }
}

TEST(PatternNesting, ParsedUnlessTooDeep) {
  const auto nested = [](int levels) {
    icu::UnicodeString pattern;
    for (int i = 0; i < levels; ++i) pattern += u"{0,choice,0#'|'";
    for (int i = 0; i < levels; ++i) pattern += u"}";
    return pattern;
  };
  for (const int levels : {0, 1, 50, 51, 100'000}) {
    UErrorCode status = U_ZERO_ERROR;
    icu::MessagePattern parsed(status);
    EXPECT_EQ(parse_pattern(nested(levels), parsed, status), levels <= 50) << levels;
    EXPECT_TRUE(U_SUCCESS(status));
    EXPECT_EQ(parsed.countParts() > 0, levels <= 50);
  }
  UErrorCode status = U_ZERO_ERROR;
  icu::MessagePattern parsed(status);
  EXPECT_TRUE(parse_pattern(u"{0,choice,", parsed, status));
  EXPECT_EQ(status, U_PATTERN_SYNTAX_ERROR);
}

/// Patterns of the pieces that mean something to ICU, most of them balanced, some damaged afterwards.
class RandomPattern {
 public:
  explicit RandomPattern(SeededRandom& random) : random_(random) {}

  icu::UnicodeString draw() {
    icu::UnicodeString pattern = message(static_cast<int>(random_.between(0, 8)));
    for (int i = static_cast<int>(random_.between(0, 3)); random_.one_in(3) && i > 0; --i) damage(pattern);
    return pattern;
  }

 private:
  template <std::size_t count>
  icu::UnicodeString one_of(const char16_t* const (&texts)[count]) {
    return texts[random_.between(0, count - 1)];
  }

  icu::UnicodeString message(int depth) {
    static constexpr const char16_t* kTexts[] = {u"x",    u"''", u"'{'",    u"'}'", u"'{|}'",  u"#",
                                                 u"it's", u" ",  u"\u2264", u"<",   u"\u200E", u"\u2028"};
    // Each closes the pattern's quotes and braces in some messages only.
    static constexpr const char16_t* kOddTexts[] = {u"'", u"'|'", u"'#'", u"'{", u"'|}'", u"'#}'", u"'|}}'", u"'#}}'"};
    icu::UnicodeString text;
    for (auto i = random_.between(0, 2); i > 0; --i) {
      text += random_.one_in(2) ? argument(depth / 3) : random_.one_in(8) ? one_of(kOddTexts) : one_of(kTexts);
    }
    return depth > 1 ? text + argument(depth) : text;
  }

  icu::UnicodeString argument(int depth) {
    static constexpr const char16_t* kSimple[] = {u"{0}",
                                                  u"{ 1 }",
                                                  u"{name}",
                                                  u"{2,number}",
                                                  u"{3,date,'}'yyyy}",
                                                  u"{0,time,{'{'}}",
                                                  u"{ 0 , number , #'{'0 }",
                                                  u"{0,choicer,x}"};
    if (depth == 0 || random_.one_in(8)) return one_of(kSimple);
    return random_.one_in(2) ? choice(depth - 1) : chosen(depth - 1);
  }

  icu::UnicodeString choice(int depth) {
    static constexpr const char16_t* kTypes[] = {u"choice", u"Choice", u" CHOICE "};
    static constexpr const char16_t* kNumbers[] = {u"0#", u" -1.5 <", u"1\u2264", u"-\u221E#", u"1e3 #"};
    icu::UnicodeString text = u"{0," + one_of(kTypes) + u",";
    for (auto i = random_.between(0, 2); i >= 0; --i) text += one_of(kNumbers) + message(depth) + (i > 0 ? u"|" : u"");
    return text + u"}";
  }

  icu::UnicodeString chosen(int depth) {
    static constexpr const char16_t* kTypes[] = {u"plural", u"select", u"selectordinal", u"PLURAL",
                                                 u" selectOrdinal\t"};
    static constexpr const char16_t* kSelectors[] = {u"one", u"=1", u" few ", u"offset:1 one", u"\u200Fa"};
    icu::UnicodeString text = u"{0," + one_of(kTypes) + u",";
    for (auto i = random_.between(0, 2); i > 0; --i) text += one_of(kSelectors) + u"{" + message(depth) + u"}";
    return text + u"other{" + message(depth) + u"}}";
  }

  void damage(icu::UnicodeString& pattern) {
    static constexpr const char16_t* kUnits[] = {u"'", u"{", u"}", u"|",      u"#",
                                                 u",", u"x", u" ", u"choice", u"{0,plural,"};
    if (pattern.isEmpty()) return;
    const auto at = static_cast<int>(random_.between(0, pattern.length() - 1));
    pattern.replace(at, static_cast<int>(random_.between(0, 1)), one_of(kUnits));
  }

  SeededRandom& random_;
};

TEST(PatternNesting, RandomPatterns_AsIcuParsesThem) {
  SeededRandom random;
  RandomPattern patterns(random);
  int taken = 0;
  int deep = 0;
  for (int i = 0; i < rounds(40'000); ++i) {
    const icu::UnicodeString pattern = patterns.draw();
    for (const auto mode : {UMSGPAT_APOS_DOUBLE_OPTIONAL, UMSGPAT_APOS_DOUBLE_REQUIRED}) {
      UErrorCode status = U_ZERO_ERROR;
      const int nesting = nesting_of_parts(pattern, mode, status);
      const int bounded = bound_pattern_nesting(pattern, mode, kNoLimit);
      if (U_SUCCESS(status)) {
        ASSERT_EQ(bounded, nesting) << escaped(pattern);
        ++taken;
        deep += nesting > 6 ? 1 : 0;
      } else {
        ASSERT_GE(bounded, nesting) << escaped(pattern);
      }
    }
  }
  EXPECT_GT(taken, rounds(20'000));
  EXPECT_GT(deep, rounds(1'000));
}

TEST(PatternNesting, RandomUnits_NeverLessThanIcuParses) {
  static constexpr const char16_t* kPieces[] = {u"{",          u"}",
                                                u"'",          u"|",
                                                u"#",          u",",
                                                u"0",          u" ",
                                                u"x",          u"=",
                                                u"choice",     u"plural",
                                                u"select",     u"selectordinal",
                                                u"other{",     u"{0,choice,0#",
                                                u"{0,plural,", u"{1,select,",
                                                u"offset:1",   u"<",
                                                u"\u2264",     u"''"};
  SeededRandom random;
  for (int i = 0; i < rounds(80'000); ++i) {
    icu::UnicodeString pattern;
    for (auto length = random.between(1, 24); length > 0; --length) {
      pattern += kPieces[random.between(0, static_cast<long long>(std::size(kPieces)) - 1)];
    }
    UErrorCode status = U_ZERO_ERROR;
    const int nesting = nesting_of_parts(pattern, UMSGPAT_APOS_DOUBLE_OPTIONAL, status);
    if (U_SUCCESS(status)) {
      ASSERT_EQ(bound(pattern), nesting) << escaped(pattern);
    } else {
      ASSERT_GE(bound(pattern), nesting) << escaped(pattern);
    }
  }
}

}  // namespace
}  // namespace qz_test
