#include <string>

#include "tests/tools/choice/choice_fixture.h"
#include "tools/choice/where.h"
#include "tools/report/finding_printer.h"

namespace {

using qzlog_tool::Where;

/// An expression and all that is said of it, or nothing where it is right.
struct Case {
  std::string expression;
  std::string said;
};

class WhereErrors : public qz_test::ChoiceTest {
 protected:
  std::string said_of(const std::string& expression) {
    qzlog_compiler::Findings findings("--where");
    const bool is_right =
        Where::compile(expression, known_, qzlog_tool::process_clock(qz_test::kNow), findings).has_value();
    EXPECT_EQ(is_right, findings.all().empty());
    qzlog_tool::FindingPrinter printer(false);
    printer.add_source("--where", expression, qzlog_compiler::LineBreaks::kLineFeed);
    std::string text;
    for (const qzlog_compiler::Finding& finding : findings.all()) printer.append(finding, text);
    return text;
  }
};

TEST_F(WhereErrors, WrongForm_IsShownWithItsPlace) {
  const Case cases[] = {
      {"", R"(--where:1:1: error: the expression is empty [bad-expression]
    1 |
      | ^
  hint: such as 'Free < 10 and exists(Pool)'
)"},
      {"Free",
       R"(--where:1:5: error: expected a comparison (= != < <= > >= ~ !~ in) behind 'Free', not the end [bad-expression]
    1 | Free
      |     ^
)"},
      {"Free = ", R"(--where:1:8: error: expected a value, not the end [bad-expression]
    1 | Free = 
      |        ^
)"},
      {"Name = vol1", R"(--where:1:8: error: expected a value, not 'vol1' [bad-expression]
    1 | Name = vol1
      |        ^
  hint: a text stands in quotes: "vol1"
)"},
      {"Flag = TRUE", R"(--where:1:8: error: expected a value, not 'TRUE' [bad-expression]
    1 | Flag = TRUE
      |        ^
  hint: did you mean 'true'?
)"},
      {"Name = tree", R"(--where:1:8: error: expected a value, not 'tree' [bad-expression]
    1 | Name = tree
      |        ^
  hint: did you mean 'true'? a text stands in quotes: "tree"
)"},
      {"NOT Free > 1",
       R"(--where:1:5: error: expected a comparison (= != < <= > >= ~ !~ in) behind 'NOT', not 'Free' [bad-expression]
    1 | NOT Free > 1
      |     ^
  hint: did you mean 'not'?
)"},
      {"Exists(Pool)",
       R"(--where:1:7: error: expected a comparison (= != < <= > >= ~ !~ in) behind 'Exists', not '(' [bad-expression]
    1 | Exists(Pool)
      |       ^
  hint: did you mean 'exists'?
)"},
      {"odd name = 5",
       R"(--where:1:5: error: expected a comparison (= != < <= > >= ~ !~ in) behind 'odd', not 'name' [bad-expression]
    1 | odd name = 5
      |     ^
  hint: a name with a blank stands in backquotes: `odd name`
)"},
      {"Free IN (1)",
       R"(--where:1:6: error: expected a comparison (= != < <= > >= ~ !~ in) behind 'Free', not 'IN' [bad-expression]
    1 | Free IN (1)
      |      ^
  hint: did you mean 'in'?
)"},
      {"Free not IN (1)", R"(--where:1:10: error: expected 'in', not 'IN' [bad-expression]
    1 | Free not IN (1)
      |          ^
  hint: did you mean 'in'?
)"},
      {"10 > Free", R"(--where:1:1: error: expected a comparison, not the value '10' [bad-expression]
    1 | 10 > Free
      | ^
  hint: the attribute stands before the value, as in 'Free < 10'
)"},
      {"Free == 10", R"(--where:1:6: error: unknown sign '==' [bad-expression]
    1 | Free == 10
      |      ^
  hint: write '='
)"},
      {"Free = 1 && Flag = true", R"(--where:1:10: error: unknown sign '&&' [bad-expression]
    1 | Free = 1 && Flag = true
      |          ^
  hint: write 'and'
)"},
      {"Free = 1 AND Flag = true", R"(--where:1:10: error: expected 'and', 'or' or the end, not 'AND' [bad-expression]
    1 | Free = 1 AND Flag = true
      |          ^
  hint: did you mean 'and'?
)"},
      {"(Free = 1", R"(--where:1:1: error: the parenthesis is not closed [bad-expression]
    1 | (Free = 1
      | ^
)"},
      {"Free = 1)", R"(--where:1:9: error: no parenthesis is open here [bad-expression]
    1 | Free = 1)
      |         ^
)"},
      {"Name =\n 'ä\x01' and\n  Free $ 1",
       "--where:3:8: error: unknown sign '$' [bad-expression]\n"
       "    3 |   Free $ 1\n      |        ^\n"
       "  hint: comparisons are = != < <= > >= ~ !~ and in (...)\n"},
      {"Name = 'ä' or Free ? 1",
       "--where:1:20: error: unknown sign '?' [bad-expression]\n"
       "    1 | Name = 'ä' or Free ? 1\n      |                    ^\n"
       "  hint: comparisons are = != < <= > >= ~ !~ and in (...)\n"},
      {"exists Pool", R"(--where:1:8: error: expected '(' behind 'exists', not 'Pool' [bad-expression]
    1 | exists Pool
      |        ^
  hint: an attribute that is called 'exists' stands in backquotes
)"},
      {"exists(Pool, Free)", R"(--where:1:12: error: expected ')', not ',' [bad-expression]
    1 | exists(Pool, Free)
      |            ^
)"},
      {"Free in 1, 2", R"(--where:1:9: error: expected '(' and a list of values, not the value '1' [bad-expression]
    1 | Free in 1, 2
      |         ^
)"},
      {"Free in (1 2)", R"(--where:1:12: error: expected ',' or ')', not the value '2' [bad-expression]
    1 | Free in (1 2)
      |            ^
)"},
      {"Free in (1, 2", R"(--where:1:9: error: the parenthesis is not closed [bad-expression]
    1 | Free in (1, 2
      |         ^
)"},
      {"Free not 1", R"(--where:1:10: error: expected 'in', not the value '1' [bad-expression]
    1 | Free not 1
      |          ^
)"},
      {"not", R"(--where:1:4: error: expected a comparison, not the end [bad-expression]
    1 | not
      |    ^
)"},
  };
  for (const Case& tested : cases) EXPECT_EQ(said_of(tested.expression), tested.said) << tested.expression;
}

TEST_F(WhereErrors, WrongValue_IsShownWithItsPlace) {
  const Case cases[] = {
      {"Free = 12ab", R"(--where:1:8: error: '12ab' is neither a number nor a time [bad-value]
    1 | Free = 12ab
      |        ^
  hint: other values stand in quotes: "text", "-2h", "2026-11-21 08:15"
)"},
      {"Name = \"vol", R"(--where:1:8: error: the text has no closing quote [bad-value]
    1 | Name = "vol
      |        ^
)"},
      {"Name = \"\\q\"", R"(--where:1:9: error: unknown escape in a text [bad-value]
    1 | Name = "\q"
      |         ^
  hint: known are \\ \" \' \* \? \n \r and \t
)"},
      {"Name = \"\xFF\"",
       "--where:1:8: error: the text is not UTF-8 [bad-value]\n    1 | Name = \"\xEF\xBF\xBD\"\n"
       "      |        ^\n"},
      {"`Name = 1", R"(--where:1:1: error: the name has no closing backquote [bad-value]
    1 | `Name = 1
      | ^
)"},
      {"When = \"tomorrow\"", R"(--where:1:8: error: 'tomorrow' is no time [bad-value]
    1 | When = "tomorrow"
      |        ^
  hint: times are 2026-11-21T08:15:30Z, 2026-11-21, '2026-11-21 08:15', today, yesterday, now, -2h (s m h d w), @1795248930
)"},
      {"Clock > \"24:00\"", R"(--where:1:9: error: '24:00' is no time of day [bad-value]
    1 | Clock > "24:00"
      |         ^
  hint: times of day are 08:15 and 08:15:30, in GMT
)"},
      {"Clock > 2026-11-21", R"(--where:1:9: error: '2026-11-21' is no time of day [bad-value]
    1 | Clock > 2026-11-21
      |         ^
  hint: times of day are 08:15 and 08:15:30, in GMT
)"},
      {"Turn > 08:60", R"(--where:1:8: error: '08:60' is no time [bad-value]
    1 | Turn > 08:60
      |        ^
  hint: times are 2026-11-21T08:15:30Z, 2026-11-21, '2026-11-21 08:15', today, yesterday, now, -2h (s m h d w), @1795248930; times of day are 08:15 and 08:15:30, in GMT
)"},
      {"When > 08:15", R"(--where:1:8: error: '08:15' is no time [bad-value]
    1 | When > 08:15
      |        ^
  hint: times are 2026-11-21T08:15:30Z, 2026-11-21, '2026-11-21 08:15', today, yesterday, now, -2h (s m h d w), @1795248930
)"},
      {"@time < 2026-13-01", R"(--where:1:9: error: '2026-13-01' is no time [bad-value]
    1 | @time < 2026-13-01
      |         ^
  hint: times are 2026-11-21T08:15:30Z, 2026-11-21, '2026-11-21 08:15', today, yesterday, now, -2h (s m h d w), @1795248930
)"},
  };
  for (const Case& tested : cases) EXPECT_EQ(said_of(tested.expression), tested.said) << tested.expression;
}

TEST_F(WhereErrors, UnknownNames_AreShownWithASuggestion) {
  const Case cases[] = {
      {"Fre < 10", R"(--where:1:1: error: the definitions have no attribute 'Fre' [undefined-attribute]
    1 | Fre < 10
      | ^
  hint: did you mean 'Free'?
)"},
      {"exists(Pol) and missing(`odd nme`)",
       R"(--where:1:8: error: the definitions have no attribute 'Pol' [undefined-attribute]
    1 | exists(Pol) and missing(`odd nme`)
      |        ^
  hint: did you mean 'Pool'?
--where:1:25: error: the definitions have no attribute 'odd nme' [undefined-attribute]
    1 | exists(Pol) and missing(`odd nme`)
      |                         ^
  hint: did you mean 'odd name'?
)"},
      {"time > \"today\"", R"(--where:1:1: error: the definitions have no attribute 'time' [undefined-attribute]
    1 | time > "today"
      | ^
  hint: the line's own is '@time'
)"},
      {"@levl > 3", R"(--where:1:1: error: lines have no field '@levl' [unknown-field]
    1 | @levl > 3
      | ^
  hint: did you mean 'level'? fields are @id @level @mask @name @seq @time and @writer
)"},
      {"@ = 3", R"(--where:1:1: error: lines have no field '@' [unknown-field]
    1 | @ = 3
      | ^
  hint: fields are @id @level @mask @name @seq @time and @writer
)"},
  };
  for (const Case& tested : cases) EXPECT_EQ(said_of(tested.expression), tested.said) << tested.expression;
}

TEST_F(WhereErrors, EventsThatTheDefinitionsDoNotHave_AreShownWithASuggestion) {
  const Case cases[] = {
      {"@name = \"DISK_FUL\"", R"(--where:1:9: error: the definitions have no event 'DISK_FUL' [undefined-event]
    1 | @name = "DISK_FUL"
      |         ^
  hint: did you mean 'DISK_FULL'?
)"},
      {"@name ~ 'X*'", R"(--where:1:9: error: the definitions have no event 'X*' [undefined-event]
    1 | @name ~ 'X*'
      |         ^
)"},
      {"@name in ('DISK_OK', 'LINK_*')",
       R"(--where:1:22: error: the definitions have no event 'LINK_*' [undefined-event]
    1 | @name in ('DISK_OK', 'LINK_*')
      |                      ^
)"},
      {"@id in (1, 99)", R"(--where:1:12: error: the definitions have no entry 99 [undefined-event]
    1 | @id in (1, 99)
      |            ^
  hint: IDs are from 1 to 3
)"},
      {"not @id = 0x63", R"(--where:1:11: error: the definitions have no entry 99 [undefined-event]
    1 | not @id = 0x63
      |           ^
  hint: IDs are from 1 to 3
)"},
  };
  for (const Case& tested : cases) EXPECT_EQ(said_of(tested.expression), tested.said) << tested.expression;
  for (const char* expression : {"@name != 'X'", "@name !~ 'X*'", "@id != 99", "@id not in (99)", "@id > 99"}) {
    EXPECT_EQ(said_of(expression), "") << expression;
  }
}

TEST_F(WhereErrors, ComparisonsThatATypeLacks_AreShownWithThoseThatItHas) {
  const Case cases[] = {
      {"Name < \"a\"", R"(--where:1:6: error: 'Name' is Char32 in entry 1, which has no '<' [no-such-comparison]
    1 | Name < "a"
      |      ^
  hint: texts have = != ~ !~ and in
)"},
      {"Mixed >= 5", R"(--where:1:7: error: 'Mixed' is Char64 in entry 2, which has no '>=' [no-such-comparison]
    1 | Mixed >= 5
      |       ^
  hint: texts have = != ~ !~ and in
)"},
      {"Free ~ \"1*\"", R"(--where:1:6: error: 'Free' is UInt2 in entry 1, which has no '~' [no-such-comparison]
    1 | Free ~ "1*"
      |      ^
  hint: numbers have = != < <= > >= and in
)"},
      {"Flag > false", R"(--where:1:6: error: 'Flag' is Bool in entry 1, which has no '>' [no-such-comparison]
    1 | Flag > false
      |      ^
  hint: Bool has = != and in
)"},
      {"Free = \"10\"",
       R"(--where:1:8: error: 'Free', of type UInt2 or UInt4, is compared with an integer, not with a text [no-such-comparison]
    1 | Free = "10"
      |        ^
)"},
      {"Free = 1.5",
       R"(--where:1:8: error: 'Free', of type UInt2 or UInt4, is compared with an integer, not with a number with a fraction [no-such-comparison]
    1 | Free = 1.5
      |        ^
)"},
      {"Name = 7",
       R"(--where:1:8: error: 'Name', of type Char32 or MBChar64, is compared with a text in quotes, not with an integer [no-such-comparison]
    1 | Name = 7
      |        ^
)"},
      {"Mixed = true",
       R"(--where:1:9: error: 'Mixed', of type SInt4 or Char64, is compared with an integer or a text in quotes, not with true or false [no-such-comparison]
    1 | Mixed = true
      |         ^
)"},
      {"Name in (\"a\", 2026-11-21)",
       R"(--where:1:15: error: 'Name', of type Char32 or MBChar64, is compared with a text in quotes, not with a time [no-such-comparison]
    1 | Name in ("a", 2026-11-21)
      |               ^
  hint: a text stands in quotes
)"},
      {"Guid = \"x\"", R"(--where:1:6: error: 'Guid' is GUID in entry 1, which has no '=' [no-such-comparison]
    1 | Guid = "x"
      |      ^
  hint: it can only be asked for with exists() and missing()
)"},
      {"@name > \"A\"", R"(--where:1:7: error: '@name' has no '>' [no-such-comparison]
    1 | @name > "A"
      |       ^
  hint: texts have = != ~ !~ and in
)"},
      {"@level = \"high\"",
       R"(--where:1:10: error: '@level' is compared with an integer, not with a text [no-such-comparison]
    1 | @level = "high"
      |          ^
)"},
  };
  for (const Case& tested : cases) EXPECT_EQ(said_of(tested.expression), tested.said) << tested.expression;
}

TEST_F(WhereErrors, ValueOutOfRange_IsShownWithTheRange) {
  const Case cases[] = {
      {"Small < 128", R"(--where:1:9: error: 'Small': 128 does not fit SInt1 (-128 to 127) [value-range]
    1 | Small < 128
      |         ^
)"},
      {"Free < 4294967296",
       R"(--where:1:8: error: 'Free': 4294967296 does not fit UInt2 or UInt4 (0 to 4294967295) [value-range]
    1 | Free < 4294967296
      |        ^
)"},
      {"Free in (1, -1)", R"(--where:1:13: error: 'Free': -1 does not fit UInt2 or UInt4 (0 to 4294967295) [value-range]
    1 | Free in (1, -1)
      |             ^
)"},
      {"Reason = 99999999999999999999999",
       R"(--where:1:10: error: 'Reason': 99999999999999999999999 does not fit SInt2 (-32768 to 32767) [value-range]
    1 | Reason = 99999999999999999999999
      |          ^
)"},
      {"Load < 1e999", R"(--where:1:8: error: 'Load': 1e999 does not fit Float [value-range]
    1 | Load < 1e999
      |        ^
)"},
      {"@level = 10", R"(--where:1:10: error: '@level': 10 is not from 0 to 9 [value-range]
    1 | @level = 10
      |          ^
)"},
      {"@seq = 18446744073709551616",
       R"(--where:1:8: error: '@seq': 18446744073709551616 is not from 0 to 18446744073709551615 [value-range]
    1 | @seq = 18446744073709551616
      |        ^
)"},
  };
  for (const Case& tested : cases) EXPECT_EQ(said_of(tested.expression), tested.said) << tested.expression;
}

TEST_F(WhereErrors, LongNumberOutOfRange_IsCut) {
  const std::string said = said_of("Free = " + std::string(60'000, '9'));
  EXPECT_EQ(said.substr(0, said.find('\n')), "--where:1:8: error: 'Free': '" + std::string(60, '9') +
                                                 "...' does not fit UInt2 or UInt4 (0 to 4294967295) [value-range]");
}

TEST_F(WhereErrors, ValuesAtTheEndsOfTheirRange_AreTaken) {
  for (const char* expression :
       {"Small in (-128, 127)", "Free in (0, 4294967295)", "Reason in (-32768, 32767)",
        "Mixed in (-2147483648, 2147483647)", "@level in (0, 9)", "@seq in (0, 18446744073709551615)",
        "@id <= 0xFFFFFFFF", "Free = 007", "Load in (1, -1.5e3, 0x10)", "`odd name` = 1", "`level` = 1", "level = 1",
        "not not exists(Guid)", "@time >= 2026-11-21T08:15:30+01:00 and When < 2026-11-21", "Name !~ '*\\*?'",
        "missing(@writer)"}) {
    EXPECT_EQ(said_of(expression), "") << expression;
  }
}

TEST_F(WhereErrors, ManyErrors_EndAfterTwenty) {
  std::string expression = "Fre = 1";
  for (int i = 0; i < 5000; ++i) expression += " or Fre = 1";
  qzlog_compiler::Findings findings("--where");
  EXPECT_FALSE(Where::compile(expression, known_, qzlog_tool::process_clock(qz_test::kNow), findings));
  EXPECT_EQ(findings.all().size(), 20u);
}

std::string repeated(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

TEST_F(WhereErrors, LargeExpressions_AreTakenUpToTheirBounds) {
  const std::string at_bound = repeated("(", 200) + "Free = 1" + repeated(")", 200);
  EXPECT_EQ(said_of(at_bound), "");
  EXPECT_EQ(said_of(repeated("not (", 200) + "Free = 1" + repeated(")", 200)), "");
  EXPECT_EQ(said_of(repeated("not ", 10000) + "Free = 1"), "");
  std::string alternatives = "Free = 1";
  while (alternatives.size() + 12 <= 65536) alternatives += " or Free = 1";
  EXPECT_EQ(said_of(alternatives), "");
  EXPECT_EQ(said_of(alternatives + std::string(65536 - alternatives.size(), ' ')), "");

  const auto rule_of = [this](const std::string& expression) {
    const std::string said = said_of(expression);
    return said.substr(0, said.find('\n'));
  };
  EXPECT_EQ(rule_of("(" + at_bound + ")"),
            "--where:1:201: error: more than 200 parentheses are open here [large-expression]");
  EXPECT_EQ(rule_of(repeated("(", 10000)),
            "--where:1:201: error: more than 200 parentheses are open here [large-expression]");
  EXPECT_EQ(rule_of(alternatives + std::string(65537 - alternatives.size(), ' ')),
            "--where:1:1: error: the expression has more than 65536 bytes [large-expression]");
  EXPECT_EQ(rule_of(repeated("(", 1 << 20)),
            "--where:1:1: error: the expression has more than 65536 bytes [large-expression]");
}

}  // namespace
