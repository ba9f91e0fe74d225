#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tests/tools/choice/choice_fixture.h"
#include "tests/tools/choice/random_entries.h"
#include "tools/choice/raw_line.h"
#include "tools/choice/where.h"

namespace {

using qz_test::RandomEntry;
using qz_test::RandomMoment;
using qz_test::RandomNumbers;
using qz_test::RandomValue;
using qzlog_tool::RawLine;
using qzlog_tool::Where;

/// An expression as it is written, and what it means, said anew.
struct Made {
  std::string text;
  std::function<bool(const RandomEntry&)> holds;
  int binding = 2;  // 0 or, 1 and, 2 a factor
};

/// A value as it is written, and what it is.
struct MadeValue {
  std::string text;
  RandomValue value;
  // Of a text the characters as they are stored, each with whether it is a wildcard.
  std::vector<std::pair<std::string, bool>> pattern;
};

bool matches(const std::vector<std::pair<std::string, bool>>& pattern, std::size_t at, const std::string& text) {
  if (at == pattern.size()) return text.empty();
  const auto& [character, is_wildcard] = pattern[at];
  if (!is_wildcard) return text.starts_with(character) && matches(pattern, at + 1, text.substr(character.size()));
  if (character == "*" && matches(pattern, at + 1, text)) return true;
  if (text.empty()) return false;
  const std::size_t size = (static_cast<unsigned char>(text[0]) >= 0xC0) ? 2 : 1;
  return matches(pattern, character == "*" ? at : at + 1, text.substr(size));
}

/// Nothing for values that do not compare.
std::optional<int> order(const RandomValue& own, const MadeValue& made) {
  const auto three_way = [](auto a, auto b) { return a < b ? -1 : a > b ? 1 : 0; };
  const RandomValue& other = made.value;
  if (const auto* const a = std::get_if<long long>(&own)) {
    if (const auto* const b = std::get_if<long long>(&other)) return three_way(*a, *b);
  } else if (const auto* const x = std::get_if<double>(&own)) {
    if (const auto* const b = std::get_if<long long>(&other)) return three_way(*x, static_cast<double>(*b));
    if (const auto* const y = std::get_if<double>(&other)) return three_way(*x, *y);
  } else if (const auto* const p = std::get_if<bool>(&own)) {
    if (const auto* const q = std::get_if<bool>(&other)) return three_way(*p, *q);
  } else if (const auto* const s = std::get_if<std::string>(&own)) {
    if (const auto* const t = std::get_if<std::string>(&other)) return three_way(*s, *t);
  } else if (const auto* const t = std::get_if<RandomMoment>(&other)) {
    return three_way(std::get<RandomMoment>(own).seconds, t->seconds);
  }
  return std::nullopt;
}

class RandomExpressions {
 public:
  explicit RandomExpressions(RandomNumbers& random) : random_(random) {}

  Made make(int depth) {
    const std::size_t kind = depth == 0 ? 0 : random_.below(4);
    if (kind == 1 || kind == 2) return joined(depth, kind == 1);
    if (kind == 3) return negated(depth);
    return comparison();
  }

 private:
  struct Subject {
    const char* name;
    char kind;  // as of attributes; x: integers or texts
    long long least;
    long long most;
  };
  static constexpr Subject kSubjects[] = {{"Name", 't', 0, 0},
                                          {"Pool", 't', 0, 0},
                                          {"Free", 'i', 0, 4294967295},
                                          {"Small", 'i', -128, 127},
                                          {"Mixed", 'x', -1000, 1000},
                                          {"Reason", 'i', -32768, 32767},
                                          {"Load", 'f', 0, 0},
                                          {"Flag", 'b', 0, 0},
                                          {"When", 'm', 0, 0},
                                          {"odd name", 'i', 0, 255},
                                          {"level", 'i', 0, 255},
                                          {"TIMEZONE_DIFFERENCE", 'i', -32768, 32767},
                                          {"DAYLIGHT_SAVING_ACTIVE", 'b', 0, 0},
                                          {"@id", 'i', 1, 3},
                                          {"@level", 'i', 0, 9},
                                          {"@mask", 'i', 0, 4294967295},
                                          {"@seq", 'i', 0, 4294967295},
                                          {"@time", 'm', 0, 0},
                                          {"@name", 't', 0, 0},
                                          {"@writer", 't', 0, 0}};

  static std::optional<RandomValue> read(const RandomEntry& entry, const std::string& name) {
    if (name == "@id") return static_cast<long long>(entry.id);
    if (name == "@level") return static_cast<long long>(entry.level);
    if (name == "@mask") return static_cast<long long>(entry.mask());
    if (name == "@name") return entry.event_name();
    if (name == "@seq")
      return entry.seq ? std::optional<RandomValue>(static_cast<long long>(*entry.seq)) : std::nullopt;
    if (name == "@time") return entry.time ? std::optional<RandomValue>(RandomMoment{*entry.time}) : std::nullopt;
    if (name == "@writer") return entry.writer.empty() ? std::nullopt : std::optional<RandomValue>(entry.writer);
    const auto found = entry.attributes.find(name);
    if (found != entry.attributes.end()) return found->second;
    // What comes with the time, on the clock of the test's zone.
    if (entry.time && name == "TIMEZONE_DIFFERENCE") return 345LL;
    if (entry.time && name == "DAYLIGHT_SAVING_ACTIVE") return false;
    return std::nullopt;
  }

  std::string blanks() { return random_.one_in(5) ? "  " : random_.one_in(20) ? "\n" : " "; }
  std::string inside(const Made& made, int binding) {
    return made.binding < binding || random_.one_in(6) ? "(" + made.text + ")" : made.text;
  }

  Made joined(int depth, bool by_and) {
    std::vector<Made> parts(2 + random_.below(2));
    for (Made& part : parts) part = make(depth - 1);
    Made made{inside(parts[0], by_and ? 1 : 0), {}, by_and ? 1 : 0};
    for (std::size_t i = 1; i < parts.size(); ++i) {
      made.text += blanks() + (by_and ? "and" : "or") + blanks() + inside(parts[i], by_and ? 1 : 0);
    }
    made.holds = [parts, by_and](const RandomEntry& entry) {
      bool result = by_and;
      for (const Made& part : parts) result = by_and ? result && part.holds(entry) : result || part.holds(entry);
      return result;
    };
    return made;
  }

  Made negated(int depth) {
    const Made part = make(depth - 1);
    return {"not " + inside(part, 2), [part](const RandomEntry& entry) { return !part.holds(entry); }};
  }

  Made comparison() {
    const Subject& subject = kSubjects[random_.below(std::size(kSubjects))];
    const std::string name = subject.name;
    const std::string written = name[0] == '@' || (name != "odd name" && !random_.one_in(5)) ? name : "`" + name + "`";
    if (random_.one_in(6)) return existence(name, written);
    if (random_.one_in(4)) return list(subject, name, written);
    const std::string relation = relation_for(subject.kind);
    const MadeValue value = value_for(subject, relation == "~" || relation == "!~");
    return {written + blanks() + relation + blanks() + value.text, [=](const RandomEntry& entry) {
              const std::optional<RandomValue> own = read(entry, name);
              return own && compare(*own, relation, value);
            }};
  }

  Made existence(const std::string& name, const std::string& written) {
    const bool wanted = random_.one_in(2);
    return {(wanted ? "exists(" : "missing( ") + written + ")",
            [=](const RandomEntry& entry) { return read(entry, name).has_value() == wanted; }};
  }

  Made list(const Subject& subject, const std::string& name, const std::string& written) {
    const bool wanted = random_.one_in(2);
    std::vector<MadeValue> values(1 + random_.below(3));
    std::string text;
    for (MadeValue& value : values) {
      value = value_for(subject, false);
      text += (text.empty() ? "" : ", ") + value.text;
    }
    return {written + (wanted ? " in (" : " not in (") + text + ")", [=](const RandomEntry& entry) {
              const std::optional<RandomValue> own = read(entry, name);
              if (!own) return false;
              const bool is_in = std::any_of(values.begin(), values.end(),
                                             [&own](const MadeValue& value) { return compare(*own, "=", value); });
              return is_in == wanted;
            }};
  }

  std::string relation_for(char kind) {
    constexpr const char* kOrders[] = {"=", "!=", "<", "<=", ">", ">="};
    constexpr const char* kTexts[] = {"=", "!=", "~", "!~"};
    if (kind == 't') return kTexts[random_.below(4)];
    return kOrders[random_.below(kind == 'b' || kind == 'x' ? 2 : 6)];
  }

  static bool compare(const RandomValue& own, const std::string& relation, const MadeValue& value) {
    if (relation == "~") return matches(value.pattern, 0, std::get<std::string>(own));
    if (relation == "!~") return !matches(value.pattern, 0, std::get<std::string>(own));
    const std::optional<int> found = order(own, value);
    if (relation == "=") return found == 0;
    if (relation == "!=") return found != 0;
    if (!found) return false;
    if (relation == "<") return *found < 0;
    if (relation == "<=") return *found <= 0;
    return relation == ">" ? *found > 0 : *found >= 0;
  }

  MadeValue value_for(const Subject& subject, bool is_pattern) {
    switch (subject.kind) {
      case 't':
        return std::string(subject.name) == "@name" ? event_value(is_pattern) : text_value(subject, is_pattern);
      case 'x':
        return random_.one_in(2) ? text_value(subject, false) : integer_value(subject);
      case 'i':
        return integer_value(subject);
      case 'f': {
        if (random_.one_in(2)) return integer_value({"", 'i', -1000, 1000});
        const double number = static_cast<double>(random_.between(-4, 4)) / 2;
        char text[32];
        std::snprintf(text, sizeof text, "%.1f", number);
        return {text, number, {}};
      }
      case 'b': {
        const bool truth = random_.one_in(2);
        return {truth ? "true" : "false", truth, {}};
      }
      default:
        return moment_value();
    }
  }

  MadeValue integer_value(const Subject& subject) {
    long long integer = qz_test::random_integer(random_);
    if (integer < subject.least || integer > subject.most) integer = 1;
    char hexadecimal[32];
    std::snprintf(hexadecimal, sizeof hexadecimal, "0x%llx", static_cast<unsigned long long>(integer));
    return {integer >= 0 && random_.one_in(4) ? hexadecimal : std::to_string(integer), integer, {}};
  }

  MadeValue moment_value() {
    const long long moment = qz_test::random_moment(random_);
    const long long before = qz_test::kNow - moment;
    const std::string text =
        random_.one_in(2) ? "\"@" + std::to_string(moment) + "\"" : "'-" + std::to_string(before) + "s'";
    return {text, RandomMoment{moment}, {}};
  }

  /// Others are refused.
  MadeValue event_value(bool is_pattern) {
    const std::string names[] = {"DISK_FULL", "DISK_OK", "LINK_DOWN"};
    std::string name = names[random_.below(3)];
    MadeValue made;
    made.value = name;
    const bool is_cut = is_pattern && random_.one_in(2);
    if (is_cut) name.resize(random_.below(name.size()));
    for (const char letter : name) made.pattern.emplace_back(std::string{letter}, false);
    if (is_cut) made.pattern.emplace_back("*", true);
    made.text = '"' + name + (is_cut ? "*" : "") + '"';
    return made;
  }

  MadeValue text_value(const Subject& subject, bool is_pattern) {
    const bool is_own = subject.name[0] == '@';
    MadeValue made;
    const char quote = random_.one_in(2) ? '"' : '\'';
    const auto& characters = qz_test::random_characters();
    std::string stored;
    const auto add = [&](const std::string& character, const std::string& text, bool is_wildcard) {
      made.pattern.emplace_back(character, is_wildcard);
      made.text += text;
      stored += character;
    };
    const std::string words[] = {"DISK_FULL", "alpha/1/x", "Name"};
    if (is_own || random_.one_in(6)) {
      for (const char letter : words[random_.below(3)]) add({letter}, {letter}, false);
    }
    for (std::size_t i = random_.below(is_own ? 1 : 4); i > 0; --i) {
      const std::string& character = characters[random_.below(random_.one_in(2) ? 2 : characters.size())];
      if (character == "*" || character == "?") {
        const bool is_escaped = random_.one_in(2);
        add(character, (is_escaped ? "\\" : "") + character, is_pattern && !is_escaped);
      } else if (character == "\\n") {
        add(character, "\\n", false);
      } else {
        add(character, (character == "\\" || character[0] == quote ? "\\" : "") + character, false);
      }
    }
    if (is_pattern && random_.one_in(2)) add("*", "*", true);
    made.text = quote + made.text + quote;
    made.value = stored;
    return made;
  }

  RandomNumbers& random_;
};

class WhereRandom : public qz_test::ChoiceTest, public ::testing::WithParamInterface<const char*> {
 protected:
  WhereRandom() { qz_LOG_LogConfig::SetCodePage(GetParam()); }
};

TEST_P(WhereRandom, ExpressionsOnEntries_HoldAsASlowEvaluatorSays) {
  qz_test::SeededRandom random;
  RandomExpressions expressions(random);
  int held = 0;
  int refused_by_bytes = 0;
  int not_held_canonical = 0;
  const int count = qz_test::rounds(1500);
  for (int round = 0; round < count; ++round) {
    const Made made = expressions.make(static_cast<int>(random.below(5)));
    qzlog_compiler::Findings findings("--where");
    std::optional<Where> where = Where::compile(made.text, known_, qzlog_tool::process_clock(qz_test::kNow), findings);
    ASSERT_TRUE(where) << made.text << ": " << findings.all().front().text;
    for (int i = 0; i < 20; ++i) {
      const RandomEntry entry = qz_test::random_entry(random);
      const bool expected = made.holds(entry);
      const bool is_canonical = random.one_in(2);
      const std::string text = is_canonical ? canonical_line(entry) : disguised_line(entry, random);
      ASSERT_EQ(where->holds(line(text)), expected) << made.text << "\n" << text;
      const bool may_hold = where->may_hold(RawLine(text));
      ASSERT_TRUE(may_hold || !expected) << made.text << "\n" << text;
      held += expected;
      not_held_canonical += is_canonical && !expected;
      refused_by_bytes += is_canonical && !may_hold;
    }
  }
  EXPECT_GT(held, count * 4);
  EXPECT_GT(refused_by_bytes, not_held_canonical / 2);
}

INSTANTIATE_TEST_SUITE_P(CodePages, WhereRandom, testing::Values("UTF-8", "ISO-8859-1"),
                         [](const auto& tested) { return std::string(tested.param).substr(0, 3); });

}  // namespace
