#include "tools/choice/comparison.h"

#include <algorithm>
#include <compare>
#include <iterator>
#include <variant>

#include "tools/choice/event_check.h"
#include "tools/choice/reader_moment.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/logs/attribute_value.h"
#include "tools/logs/event_name.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;

/// A field as a value of a type.
struct FieldRow {
  std::string_view name;
  qz_AttributeType type;
  std::uint64_t most;
};
// In the order of LineField.
constexpr FieldRow kFields[] = {
    {"id", TypeUInt4, 0xFFFFFFFF}, {"level", TypeUInt1, 9},        {"mask", TypeUInt4, 0xFFFFFFFF},
    {"name", TypeChar256, 0},      {"seq", TypeUInt4, UINT64_MAX}, {"time", TypeTimestamp, 0},
    {"writer", TypeChar256, 0},
};
constexpr std::string_view kFieldNames = "fields are @id @level @mask @name @seq @time and @writer";

const FieldRow* find_field(std::string_view name) {
  const auto* const row = std::find_if(std::begin(kFields), std::end(kFields),
                                       [name](const FieldRow& field) { return field.name == name; });
  return row != std::end(kFields) ? row : nullptr;
}

const FieldRow& require_field(const Operand& operand) {
  if (const FieldRow* const row = find_field(operand.name)) return *row;
  std::vector<std::string_view> names;
  for (const FieldRow& row : kFields) names.push_back(row.name);
  throw ExpressionFault{ChoiceRule::kUnknownField, operand.offset, "lines have no field " + quoted("@" + operand.name),
                        qzlog_compiler::did_you_mean(operand.name, names, std::string(kFieldNames))};
}

const KnownAttribute& require_attribute(const Operand& operand, const KnownDefinitions& known) {
  if (const KnownAttribute* const attribute = known.find_attribute(operand.name)) return *attribute;
  std::string hint = qzlog_compiler::did_you_mean(operand.name, known.attribute_names());
  if (find_field(operand.name) != nullptr) hint = "the line's own is '@" + operand.name + "'";
  throw ExpressionFault{ChoiceRule::kUndefinedAttribute, operand.offset,
                        "the definitions have no attribute " + quoted(operand.name), hint};
}

bool is_negative(Relation relation) {
  return relation == Relation::kNotEqual || relation == Relation::kMatchesNot || relation == Relation::kNotIn;
}

// Of what does not compare, such as NaN, only != holds.
bool holds_order(Relation relation, std::partial_ordering order) {
  switch (relation) {
    case Relation::kEqual:
    case Relation::kIn:
      return std::is_eq(order);
    case Relation::kNotEqual:
    case Relation::kNotIn:
      return std::is_neq(order);
    case Relation::kLess:
      return std::is_lt(order);
    case Relation::kLessOrEqual:
      return std::is_lteq(order);
    case Relation::kGreater:
      return std::is_gt(order);
    case Relation::kGreaterOrEqual:
      return std::is_gteq(order);
    default:
      return false;
  }
}

}  // namespace

Comparison Comparison::compile(const WrittenComparison& written, const KnownDefinitions& known,
                               const ReaderClock& clock) {
  Comparison made(known);
  ComparedThing thing;
  made.relation_ = written.relation;
  made.is_field_ = written.operand.is_field;
  if (made.is_field_) {
    const FieldRow& row = require_field(written.operand);
    made.field_ = static_cast<LineField>(&row - kFields);
    thing = compared_field(written, row.type, row.most);
  } else {
    thing = compared_attribute(written, require_attribute(written.operand, known));
    made.name_ = written.operand.name;
    made.types_ = thing.types;
    made.key_ = RawKey(made.name_);
  }
  for (const Literal& literal : written.values) {
    made.values_.push_back(compared_value(literal, written.relation, thing, clock));
    made.check_event(literal);
  }
  return made;
}

// As the options for names and IDs do; that something is not an event may well be true.
void Comparison::check_event(const Literal& literal) const {
  if (!is_field_ || is_negative(relation_)) return;
  const ComparedValue& value = values_.back();
  std::optional<NoSuchEvent> fault;
  if (field_ == LineField::kName) fault = find_fault_of_name(literal.text, *value.text, *known_);
  if (field_ == LineField::kId && (relation_ == Relation::kEqual || relation_ == Relation::kIn)) {
    fault = find_fault_of_id(static_cast<std::uint32_t>(*value.integer), *known_);
  }
  if (fault) throw ExpressionFault{ChoiceRule::kUndefinedEvent, literal.offset, fault->text, fault->hint};
}

/// `order_of`: the value's own order to one of the expression.
template <class OrderOf>
bool Comparison::compare_by(OrderOf&& order_of) const {
  if (relation_ == Relation::kNotIn) {
    return std::all_of(values_.begin(), values_.end(), [&](const auto& value) { return std::is_neq(order_of(value)); });
  }
  return std::any_of(values_.begin(), values_.end(),
                     [&](const auto& value) { return holds_order(relation_, order_of(value)); });
}

template <class Own, class Member>
bool Comparison::compare(const Own& own, Member&& member) const {
  return compare_by([&](const ComparedValue& value) {
    const auto& compared = value.*member;
    return compared ? std::partial_ordering(own <=> *compared) : std::partial_ordering::unordered;
  });
}

bool Comparison::compare_text(std::string_view own) const {
  const bool matches = std::any_of(values_.begin(), values_.end(),
                                   [own](const auto& value) { return value.text && value.text->matches(own); });
  return matches != is_negative(relation_);
}

// As messages show them: days and times of day in GMT.
bool Comparison::compare_stored_moment(const StoredMoment& own) const {
  if (own.type == TypeTime) return compare(time_of_day(own.seconds), &ComparedValue::time_of_day);
  if (own.type != TypeDate) return compare_moment(own.seconds);
  return compare_by([&own](const ComparedValue& value) {
    if (value.day) return std::partial_ordering(day_of_moment(own.seconds) <=> *value.day);
    return value.moment ? std::partial_ordering(own.seconds <=> *value.moment) : std::partial_ordering::unordered;
  });
}

bool Comparison::compare_line_time(std::string_view own) const {
  return compare_by([own](const ComparedValue& value) { return own <=> std::string_view(value.moment_text); });
}

bool Comparison::holds(const qz_LOG_EntryLine& line, StoredTexts& texts) const {
  return is_field_ ? holds_field(line) : holds_attribute(line.GetEntry(), texts);
}

bool Comparison::holds_attribute(const qz_LOG_LogEntry& entry, StoredTexts& texts) const {
  const AttributeValue own = read_attribute(entry, name_.c_str());
  if (std::holds_alternative<std::monostate>(own)) return false;
  if (relation_ == Relation::kExists) return true;
  if (const auto* const integer = std::get_if<long long>(&own)) return compare_integer(*integer);
  if (const auto* const text = std::get_if<StoredText>(&own)) {
    const std::optional<std::string_view> utf8 = texts.utf8(text->text);
    return utf8 ? compare_text(*utf8) : is_negative(relation_);
  }
  if (const auto* const truth = std::get_if<bool>(&own)) return compare(*truth, &ComparedValue::truth);
  if (const auto* const number = std::get_if<double>(&own)) return compare(*number, &ComparedValue::number);
  return compare_stored_moment(std::get<StoredMoment>(own));
}

bool Comparison::holds_field(const qz_LOG_EntryLine& line) const {
  const qz_LOG_LogEntry& entry = line.GetEntry();
  const bool asks_for_existence = relation_ == Relation::kExists;
  switch (field_) {
    case LineField::kId:
      return asks_for_existence || compare_integer(entry.GetEntryID());
    case LineField::kLevel:
      return asks_for_existence || compare_integer(entry.GetLogLevel());
    case LineField::kMask:
      return asks_for_existence || compare_integer(entry.GetPropertyMask());
    case LineField::kName:
      return holds_name(line);
    case LineField::kSeq:
      return line.HasSeq() && (asks_for_existence || compare(std::uint64_t{line.GetSeq()}, &ComparedValue::natural));
    case LineField::kTime:
      return line.HasTime() && (asks_for_existence || compare_moment(entry.GetTimestamp(true).unix_seconds()));
    case LineField::kWriter:
      return line.GetWriter()[0] != '\0' && (asks_for_existence || compare_text(line.GetWriter()));
  }
  return false;
}

bool Comparison::holds_name(const qz_LOG_EntryLine& line) const {
  const std::string_view name = event_name(line, known_->find_name(line.GetEntry().GetEntryID()));
  return !name.empty() && (relation_ == Relation::kExists || compare_text(name));
}

bool Comparison::may_be(bool wanted, const RawLine& line, const StoredTexts& texts) const {
  const std::optional<bool> known = is_field_ ? field_known_from(line) : attribute_known_from(line, texts);
  return !known || *known == wanted;
}

std::optional<bool> Comparison::attribute_known_from(const RawLine& line, const StoredTexts& texts) const {
  if (!key_.is_plain()) return std::nullopt;
  const RawValue value = line.find(key_);
  if (value.kind == RawValue::Kind::kUnknown) return std::nullopt;
  if (value.kind == RawValue::Kind::kAbsent) return false;
  if (relation_ == Relation::kExists) return true;
  // These are written like values of other types.
  if (types_.meets(kFloatTypes) || types_.meets(kTimeTypes)) return std::nullopt;
  if (value.kind == RawValue::Kind::kInteger) return compare_integer(value.integer);
  if (value.kind == RawValue::Kind::kBool) return compare(value.truth, &ComparedValue::truth);
  return text_known_from(value.text, line, texts);
}

std::optional<bool> Comparison::text_known_from(std::string_view text, const RawLine& line,
                                                const StoredTexts& texts) const {
  const bool asks_for_text =
      std::any_of(values_.begin(), values_.end(), [](const auto& value) { return value.text.has_value(); });
  if (asks_for_text && (!texts.are_utf8() || line.may_give_bytes())) return std::nullopt;
  return compare_text(text);
}

std::optional<bool> Comparison::field_known_from(const RawLine& line) const {
  if (field_ == LineField::kMask || field_ == LineField::kName) return event_known_from(line);
  const bool asks_for_existence = relation_ == Relation::kExists;
  switch (field_) {
    case LineField::kId:
      return line.has_id() ? std::optional(asks_for_existence || compare_integer(line.id())) : std::nullopt;
    case LineField::kLevel:
      return line.has_level() ? std::optional(asks_for_existence || compare_integer(line.level())) : std::nullopt;
    case LineField::kSeq:
      if (!line.has_seq()) return std::nullopt;
      return asks_for_existence || compare(line.seq(), &ComparedValue::natural);
    case LineField::kTime:
      if (line.time().empty()) return std::nullopt;
      return asks_for_existence || compare_line_time(line.time());
    default:
      if (!line.has_writer()) return std::nullopt;
      return asks_for_existence || compare_text(line.writer());
  }
}

std::optional<bool> Comparison::event_known_from(const RawLine& line) const {
  const KnownEvent* const event = line.has_id() ? known_->find_event(line.id()) : nullptr;
  if (event == nullptr) return std::nullopt;
  const bool asks_for_existence = relation_ == Relation::kExists;
  if (field_ == LineField::kMask) {
    if (event->masks.size() != 1) return std::nullopt;
    return asks_for_existence || compare_integer(event->masks.front());
  }
  if (event->names.size() != 1) return std::nullopt;
  return asks_for_existence || compare_text(event->names.front());
}

}  // namespace qzlog_tool
