#include "tools/choice/compared_value.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>
#include <vector>

#include "tools/choice/reader_moment.h"
#include "tools/choice/stored_text.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;
using qzlog_compiler::short_type_name;

constexpr long long kLeastInteger = std::numeric_limits<long long>::min();
constexpr long long kMostInteger = std::numeric_limits<long long>::max();

/// Relations, a bit for each.
class RelationSet {
 public:
  constexpr RelationSet(std::initializer_list<Relation> relations) {
    for (const Relation relation : relations) bits_ |= bit(relation);
  }
  constexpr bool has(Relation relation) const { return (bits_ & bit(relation)) != 0; }

 private:
  static constexpr unsigned bit(Relation relation) { return 1U << static_cast<unsigned>(relation); }

  unsigned bits_ = 0;
};

constexpr RelationSet kOfTruth = {Relation::kEqual, Relation::kNotEqual, Relation::kIn, Relation::kNotIn,
                                  Relation::kExists};
constexpr RelationSet kOfOrdered = {Relation::kEqual,       Relation::kNotEqual, Relation::kLess,
                                    Relation::kLessOrEqual, Relation::kGreater,  Relation::kGreaterOrEqual,
                                    Relation::kIn,          Relation::kNotIn,    Relation::kExists};
constexpr RelationSet kOfTexts = {Relation::kEqual, Relation::kNotEqual, Relation::kMatches, Relation::kMatchesNot,
                                  Relation::kIn,    Relation::kNotIn,    Relation::kExists};
constexpr RelationSet kOfExistence = {Relation::kExists};

/// What one kind of types can do.
struct TypeKind {
  TypeSet types;
  RelationSet relations;
  std::string_view hint;
  std::string_view value;
};

constexpr TypeKind kKinds[] = {
    {kBoolTypes, kOfTruth, "Bool has = != and in", "true or false"},
    {kIntegerTypes, kOfOrdered, "numbers have = != < <= > >= and in", "an integer"},
    {kFloatTypes, kOfOrdered, "numbers have = != < <= > >= and in", "a number"},
    {kTextTypes, kOfTexts, "texts have = != ~ !~ and in", "a text in quotes"},
    {kTimeTypes, kOfOrdered, "times have = != < <= > >= and in", "a time"},
};
constexpr TypeKind kOtherKind = {TypeSet(), kOfExistence, "it can only be asked for with exists() and missing()",
                                 "nothing"};

const TypeKind& kind_of(qz_AttributeType type) {
  for (const TypeKind& kind : kKinds) {
    if (kind.types.has(type)) return kind;
  }
  return kOtherKind;
}

/// In quotes, as an expression has it.
std::string shown_relation(Relation relation) {
  // In the order of Relation.
  constexpr std::string_view kTexts[] = {"=", "!=", "<", "<=", ">", ">=", "~", "!~", "in", "not in", "exists"};
  return quoted(kTexts[static_cast<std::size_t>(relation)]);
}

struct IntegerBounds {
  qz_AttributeType type;
  long long least;
  long long most;
};
constexpr IntegerBounds kIntegerBounds[] = {
    {TypeUInt1, 0, 255},        {TypeSInt1, -128, 127},       {TypeUInt2, 0, 65535},
    {TypeSInt2, -32768, 32767}, {TypeUInt4, 0, 4294967295LL}, {TypeSInt4, -2147483648LL, 2147483647LL},
};

// A value that fits one of several types can be compared with all.
void set_bounds(TypeSet types, ComparedThing& thing) {
  thing.least = kMostInteger;
  for (const IntegerBounds& bounds : kIntegerBounds) {
    if (!types.has(bounds.type)) continue;
    thing.least = std::min(thing.least, bounds.least);
    thing.most = std::max(thing.most, static_cast<std::uint64_t>(bounds.most));
  }
}

ExpressionFault no_comparison(std::size_t offset, std::string text, std::string_view hint) {
  return {ChoiceRule::kNoSuchComparison, offset, std::move(text), std::string(hint)};
}

/// "an integer or a text in quotes".
std::string taken_values(TypeSet types) {
  std::vector<std::string_view> values;
  for (const TypeKind& kind : kKinds) {
    if (!types.meets(kind.types)) continue;
    if (std::find(values.begin(), values.end(), kind.value) == values.end()) values.push_back(kind.value);
  }
  std::string text;
  for (const std::string_view value : values) text += (text.empty() ? "" : " or ") + std::string(value);
  return text;
}

std::string_view kind_text(Literal::Kind kind) {
  constexpr std::string_view kTexts[] = {"an integer", "a number with a fraction", "a text", "a time", "true or false"};
  return kTexts[static_cast<std::size_t>(kind)];
}

bool fits(const Literal& literal, const ComparedThing& thing) {
  if (literal.too_large) return false;
  if (!literal.negative || literal.magnitude == 0) {
    return literal.magnitude <= thing.most &&
           (thing.least <= 0 || literal.magnitude >= static_cast<std::uint64_t>(thing.least));
  }
  return thing.least < 0 && literal.magnitude <= std::uint64_t{0} - static_cast<std::uint64_t>(thing.least);
}

long long clamped_integer(const Literal& literal) {
  if (literal.too_large || literal.magnitude > static_cast<std::uint64_t>(kMostInteger)) {
    return literal.negative ? kLeastInteger : kMostInteger;
  }
  const auto integer = static_cast<long long>(literal.magnitude);
  return literal.negative ? -integer : integer;
}

ExpressionFault out_of_range(const Literal& literal, const ComparedThing& thing) {
  constexpr std::size_t kMostShownBytes = 60;
  const bool is_short = literal.text.size() <= kMostShownBytes;
  std::string text = is_short ? literal.text : quoted(literal.text);
  const std::string range = std::to_string(thing.least) + " to " + std::to_string(thing.most);
  if (thing.type_text.empty()) {
    text += " is not from " + range;
  } else {
    text += " does not fit " + thing.type_text + (thing.types.meets(kIntegerTypes) ? " (" + range + ")" : "");
  }
  return {ChoiceRule::kValueRange, literal.offset, thing.name + ": " + text};
}

void take_number(const Literal& literal, const ComparedThing& thing, ComparedValue& value) {
  const bool is_integer = literal.kind == Literal::Kind::kInteger;
  const bool is_for_floats = thing.types.meets(kFloatTypes);
  if (is_for_floats) {
    if (std::isinf(literal.number)) throw out_of_range(literal, thing);
    value.number = literal.number;
  }
  if (!is_integer || !thing.types.meets(kIntegerTypes)) return;
  if (!is_for_floats && !fits(literal, thing)) throw out_of_range(literal, thing);
  value.integer = clamped_integer(literal);
  if (!literal.negative || literal.magnitude == 0) value.natural = literal.magnitude;
}

/// Types whose values name a day.
constexpr TypeSet kMomentTypes = [] {
  TypeSet types(TypeDate, TypeDate);
  types.add(TypeTimestamp);
  return types;
}();

ExpressionFault no_time(const Literal& literal, TypeSet types) {
  const bool has_moments = types.meets(kMomentTypes);
  std::string hint = has_moments ? "times are " + std::string(kMomentForms) : "";
  if (types.has(TypeTime)) hint += std::string(has_moments ? "; " : "") + "times of day are 08:15 and 08:15:30, in GMT";
  return {ChoiceRule::kBadValue, literal.offset,
          quoted(literal.text) + (has_moments ? " is no time" : " is no time of day"), std::move(hint)};
}

void take_moment(const Literal& literal, const ComparedThing& thing, const ReaderClock& clock, ComparedValue& value) {
  value.time_of_day = find_time_of_day(literal.text);
  value.day = find_day(literal.text, clock);
  value.moment = find_moment(literal.text, clock);
  if (value.moment) value.moment_text = line_moment_text(*value.moment);
  const bool is_taken =
      (value.time_of_day && thing.types.has(TypeTime)) || (value.moment && thing.types.meets(kMomentTypes));
  if (!is_taken && !thing.types.meets(kTextTypes)) throw no_time(literal, thing.types);
}

void take_text(const Literal& literal, Relation relation, const ComparedThing& thing, ComparedValue& value) {
  const bool is_pattern = relation == Relation::kMatches || relation == Relation::kMatchesNot;
  std::vector<std::size_t> wildcards;
  if (is_pattern) wildcards = literal.wildcards;
  if (!thing.stores_breaks) {
    value.text.emplace(literal.text, wildcards);
    return;
  }
  const std::string_view text = literal.text;
  std::string stored;
  std::size_t begin = 0;
  for (std::size_t& place : wildcards) {
    stored += with_stored_line_breaks(text.substr(begin, place - begin));
    begin = std::exchange(place, stored.size());
  }
  stored += with_stored_line_breaks(text.substr(begin));
  value.text.emplace(stored, wildcards);
}

bool takes(TypeSet types, Literal::Kind kind) {
  switch (kind) {
    case Literal::Kind::kInteger:
      return types.meets(kIntegerTypes) || types.meets(kFloatTypes);
    case Literal::Kind::kFloat:
      return types.meets(kFloatTypes);
    case Literal::Kind::kText:
      return types.meets(kTextTypes) || types.meets(kTimeTypes);
    case Literal::Kind::kTime:
      return types.meets(kTimeTypes);
    case Literal::Kind::kBool:
      return types.meets(kBoolTypes);
  }
  return false;
}

}  // namespace

ComparedThing compared_attribute(const WrittenComparison& written, const KnownAttribute& known) {
  ComparedThing thing;
  thing.name = quoted(written.operand.name);
  thing.types = known.types;
  thing.stores_breaks = true;
  for (const auto& [type, place] : known.places) {
    const TypeKind& kind = kind_of(type);
    if (!kind.relations.has(written.relation)) {
      throw no_comparison(written.relation_offset,
                          thing.name + " is " + std::string(short_type_name(type)) + " in " + place +
                              ", which has no " + shown_relation(written.relation),
                          kind.hint);
    }
    thing.type_text += (thing.type_text.empty() ? "" : " or ") + std::string(short_type_name(type));
  }
  set_bounds(known.types, thing);
  return thing;
}

ComparedThing compared_field(const WrittenComparison& written, qz_AttributeType type, std::uint64_t most) {
  const TypeKind& kind = kind_of(type);
  ComparedThing thing;
  thing.name = quoted("@" + written.operand.name);
  thing.types.add(type);
  thing.most = most;
  if (!kind.relations.has(written.relation)) {
    throw no_comparison(written.relation_offset, thing.name + " has no " + shown_relation(written.relation), kind.hint);
  }
  return thing;
}

ComparedValue compared_value(const Literal& literal, Relation relation, const ComparedThing& thing,
                             const ReaderClock& clock) {
  if (!takes(thing.types, literal.kind)) {
    throw no_comparison(literal.offset,
                        thing.name + (thing.type_text.empty() ? "" : ", of type " + thing.type_text + ",") +
                            " is compared with " + taken_values(thing.types) + ", not with " +
                            std::string(kind_text(literal.kind)),
                        literal.kind == Literal::Kind::kTime ? "a text stands in quotes" : "");
  }
  ComparedValue value;
  switch (literal.kind) {
    case Literal::Kind::kInteger:
    case Literal::Kind::kFloat:
      take_number(literal, thing, value);
      break;
    case Literal::Kind::kBool:
      value.truth = literal.truth;
      break;
    default:
      if (thing.types.meets(kTimeTypes)) take_moment(literal, thing, clock, value);
      if (literal.kind == Literal::Kind::kText) take_text(literal, relation, thing, value);
  }
  return value;
}

}  // namespace qzlog_tool
