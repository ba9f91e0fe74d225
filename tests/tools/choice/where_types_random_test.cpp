// Which comparisons the definitions have: random ones, right and wrong, against a table of what each type takes.
#include <cstddef>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/tools/choice/choice_fixture.h"
#include "tools/choice/where.h"

namespace {

using qzlog_tool::Where;

/// What is compared: t texts, i integers, x both, f floating points, b truths, m moments, - nothing that is known.
struct Subject {
  const char* name;
  char kind;
  const char* too_small = "";
  const char* too_large = "";
};

constexpr Subject kSubjects[] = {
    {"Name", 't'},
    {"Pool", 't'},
    {"@writer", 't'},
    {"Free", 'i', "-1", "4294967296"},
    {"Small", 'i', "-129", "128"},
    {"Reason", 'i', "-32769", "0x8000"},
    {"`odd name`", 'i', "-1", "256"},
    {"level", 'i', "-1", "256"},
    {"@level", 'i', "-1", "10"},
    {"@mask", 'i', "-1", "4294967296"},
    {"@seq", 'i', "-1", "18446744073709551616"},
    {"TIMEZONE_DIFFERENCE", 'i', "-32769", "32768"},
    {"Mixed", 'x', "-2147483649", "2147483648"},
    {"Load", 'f', "-1e999", "1e999"},
    {"Flag", 'b'},
    {"DAYLIGHT_SAVING_ACTIVE", 'b'},
    {"When", 'm'},
    {"@time", 'm'},
    {"Fre", '-'},
    {"@levels", '-'},
    {"`odd  name`", '-'},
};

/// A value and the kinds of subjects that take it.
struct Value {
  const char* text;
  const char* takers;
};

constexpr Value kValues[] = {
    {"7", "ixf"},
    {"0x5", "ixf"},
    {"0", "ixf"},
    {"-1.5", "f"},
    {"2.5e3", "f"},
    {"\"text\"", "tx"},
    {"'a*?'", "tx"},
    {"\"7\"", "tx"},
    {"'today'", "txm"},
    {"'-2h'", "txm"},
    {"\"@17\"", "txm"},
    {"2026-11-21", "m"},
    {"true", "b"},
    {"false", "b"},
    {"2026-11-21T08:15:30Z", "m"},
    {"'2026-11-21 08:15'", "txm"},
};

/// The relations and the kinds of subjects that have them.
constexpr Value kRelations[] = {
    {"=", "tixfbm"}, {"!=", "tixfbm"}, {"<", "ifm"}, {"<=", "ifm"},
    {">", "ifm"},    {">=", "ifm"},    {"~", "t"},   {"!~", "t"},
};

bool takes(const char* kinds, char kind) { return std::string(kinds).find(kind) != std::string::npos; }

struct Made {
  std::string text;
  bool is_right = true;
  const char* rule = "";  // of one that has a single mistake
};

/// A value that a subject takes or not.
Made random_value(qz_test::RandomNumbers& random, const Subject& subject) {
  if (*subject.too_small != '\0' && random.one_in(8)) {
    return {random.one_in(2) ? subject.too_small : subject.too_large, false, "value-range"};
  }
  const Value& value = kValues[random.below(std::size(kValues))];
  if (takes(value.takers, subject.kind) || subject.kind == '-') return {value.text};
  // A text that is compared with a moment is taken for a badly written one.
  const bool is_text = takes(value.takers, 't');
  return {value.text, false, subject.kind == 'm' && is_text ? "bad-value" : "no-such-comparison"};
}

Made random_comparison(qz_test::RandomNumbers& random) {
  const Subject& subject = kSubjects[random.below(std::size(kSubjects))];
  const bool is_known = subject.kind != '-';
  const char* const unknown = subject.name[0] == '@' ? "unknown-field" : "undefined-attribute";
  if (random.one_in(8)) {
    return {std::string(random.one_in(2) ? "exists(" : "missing(") + subject.name + ")", is_known,
            is_known ? "" : unknown};
  }
  Made made;
  if (random.one_in(5)) {
    made = {std::string(subject.name) + (random.one_in(2) ? " in (" : " not in ("), true, ""};
    for (std::size_t left = 1 + random.below(3); left > 0; --left) {
      const Made value = random_value(random, subject);
      made.text += value.text + (left > 1 ? ", " : ")");
      if (!value.is_right && made.is_right) made.rule = value.rule;
      made.is_right = made.is_right && value.is_right;
    }
  } else {
    const Value& relation = kRelations[random.below(std::size(kRelations))];
    const Made value = random_value(random, subject);
    made = {std::string(subject.name) + ' ' + relation.text + ' ' + value.text, value.is_right, value.rule};
    if (is_known && !takes(relation.takers, subject.kind)) made = {made.text, false, "no-such-comparison"};
  }
  if (!is_known) return {made.text, false, unknown};
  return made;
}

class WhereTypesRandom : public qz_test::ChoiceTest {
 protected:
  bool compile(const std::string& text, qzlog_compiler::Findings& findings) {
    return Where::compile(text, known_, qzlog_tool::process_clock(qz_test::kNow), findings).has_value();
  }
};

TEST_F(WhereTypesRandom, Comparison_IsRefusedByTheRuleThatItBreaks) {
  qz_test::SeededRandom random;
  int right = 0;
  std::multiset<std::string> rules;
  const int count = qz_test::rounds(5000);
  for (int round = 0; round < count; ++round) {
    const Made made = random_comparison(random);
    qzlog_compiler::Findings findings("--where");
    ASSERT_EQ(compile(made.text, findings), made.is_right) << made.text;
    ASSERT_EQ(findings.all().empty(), made.is_right) << made.text;
    right += made.is_right;
    if (made.is_right) continue;
    EXPECT_EQ(findings.all().front().rule.name(), made.rule) << made.text << ": " << findings.all().front().text;
    rules.insert(made.rule);
  }
  EXPECT_GT(right, count / 8);
  for (const char* const rule :
       {"no-such-comparison", "value-range", "bad-value", "undefined-attribute", "unknown-field"}) {
    EXPECT_GT(rules.count(rule), static_cast<std::size_t>(count) / 500) << rule;
  }
}

// Each that is wrong is told at its place, and none that is right.
TEST_F(WhereTypesRandom, JoinedComparisons_AreRefusedWhereTheyAreWrong) {
  qz_test::SeededRandom random;
  const int count = qz_test::rounds(1500);
  for (int round = 0; round < count; ++round) {
    std::string text;
    std::vector<std::pair<std::size_t, std::size_t>> places;
    std::set<std::size_t> wrong;
    int open = 0;
    for (std::size_t number = 0; number < 1 + random.below(6); ++number) {
      if (number > 0) text += random.one_in(2) ? " and " : " or ";
      if (random.one_in(4)) text += "not ";
      for (; random.one_in(4); ++open) text += '(';
      const Made made = random_comparison(random);
      places.emplace_back(text.size() + 1, text.size() + made.text.size());
      if (!made.is_right) wrong.insert(number);
      text += made.text;
      for (; open > 0 && random.one_in(2); --open) text += ')';
    }
    text += std::string(static_cast<std::size_t>(open), ')');
    qzlog_compiler::Findings findings("--where");
    ASSERT_EQ(compile(text, findings), wrong.empty()) << text;
    std::set<std::size_t> told;
    for (const qzlog_compiler::Finding& finding : findings.all()) {
      for (std::size_t number = 0; number < places.size(); ++number) {
        const std::size_t column = finding.place.column;
        if (column >= places[number].first && column <= places[number].second) told.insert(number);
      }
    }
    ASSERT_EQ(told, wrong) << text;
  }
}

// ---- large expressions, asked about entries ----

std::string repeated(const std::string& text, std::size_t count) {
  std::string result;
  for (; count > 0; --count) result += text;
  return result;
}

class LargeWhere : public WhereTypesRandom {
 protected:
  bool holds(const std::string& expression, int free, const std::string& name = "x") {
    qzlog_compiler::Findings findings("--where");
    std::optional<Where> where = Where::compile(expression, known_, qzlog_tool::process_clock(qz_test::kNow), findings);
    EXPECT_TRUE(where) << expression.substr(0, 80);
    const std::string own =
        R"({"id":1,"level":3,"attributes":{"Name":")" + name + R"(","Free":)" + std::to_string(free) + "}}";
    const bool result = where->holds(line(own));
    EXPECT_TRUE(where->may_hold(qzlog_tool::RawLine(own)) || !result);
    return result;
  }
};

TEST_F(LargeWhere, TenThousandNegations_HoldAsTheirNumberSays) {
  EXPECT_TRUE(holds(repeated("not ", 10'000) + "Free = 1", 1));
  EXPECT_FALSE(holds(repeated("not ", 10'001) + "Free = 1", 1));
  EXPECT_TRUE(holds(repeated("not ", 10'001) + "Free = 1", 2));
}

TEST_F(LargeWhere, DeepestNesting_HoldsAsItsLevelsSay) {
  // From the inside: Free = 7, and then each level takes its own number too, or leaves out another.
  std::string expression = "Free = 7";
  for (int level = 0; level < 200; ++level) {
    const std::string number = std::to_string(1000 + level);
    expression = level % 2 == 0 ? "Free = " + number + " or (" + expression + ")"
                                : "not Free = " + std::to_string(1000 + level - 1) + " and (" + expression + ")";
  }
  EXPECT_TRUE(holds(expression, 7));
  EXPECT_FALSE(holds(expression, 8));
  EXPECT_FALSE(holds(expression, 1000));  // which the next level leaves out
  EXPECT_FALSE(holds(expression, 1198));
}

TEST_F(LargeWhere, LongestListsAndAlternatives_HoldForEachOfTheirNumbers) {
  std::string list = "Free in (0";
  int last = 0;
  while (list.size() < 65'520) list += ',' + std::to_string(last += 3);
  list += ')';
  std::string alternatives = "Free = 0";
  int final_one = 0;
  while (alternatives.size() < 65'500) alternatives += " or Free = " + std::to_string(final_one += 3);
  for (const auto& [expression, most] : {std::pair(list, last), std::pair(alternatives, final_one)}) {
    ASSERT_LE(expression.size(), 65'536u);
    for (const int free : {0, 3, 3000, most}) EXPECT_TRUE(holds(expression, free)) << free;
    for (const int free : {1, 3001, most + 3}) EXPECT_FALSE(holds(expression, free)) << free;
  }
}

TEST_F(LargeWhere, LongestPattern_IsMatched) {
  const std::string stars = repeated("*a", 32'000);
  EXPECT_FALSE(holds("Name ~ '" + stars + "'", 1, repeated("a", 32)));
  EXPECT_TRUE(holds("Name !~ '" + stars + "'", 1, repeated("a", 32)));
  EXPECT_TRUE(holds("Name ~ '" + repeated("*", 65'000) + "'", 1, repeated("a", 32)));
}

TEST_F(LargeWhere, DeeperOnes_AreRefused) {
  for (const std::string& opened : {repeated("(", 10'000), repeated("not (", 10'000)}) {
    qzlog_compiler::Findings findings("--where");
    EXPECT_FALSE(compile(opened + "Free = 1" + repeated(")", 10'000), findings));
    ASSERT_EQ(findings.all().size(), 1u);
    EXPECT_EQ(findings.all().front().rule.name(), "large-expression");
  }
}

}  // namespace
