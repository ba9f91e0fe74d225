#include "tools/stats/grouping.h"

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/logs/attribute_value.h"
#include "tools/logs/event_name.h"
#include "tools/shown/field_values.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;

constexpr long long kHour = 3600;
constexpr long long kDay = 24 * kHour;

struct ByWord {
  std::string_view word;
  GroupBy by;
};
constexpr ByWord kWords[] = {{"event", GroupBy::kEvent},
                             {"level", GroupBy::kLevel},
                             {"hour", GroupBy::kHour},
                             {"day", GroupBy::kDay},
                             {"writer", GroupBy::kWriter}};
constexpr std::string_view kAttributePrefix = "attribute:";

const KnownAttribute& require_attribute(const char* option, const std::string& name, const KnownDefinitions& known,
                                        std::vector<std::string_view> candidates) {
  if (const KnownAttribute* const attribute = known.find_attribute(name)) return *attribute;
  const std::string hint = qzlog_compiler::did_you_mean(name, candidates);
  throw CommandError(kExitCannotRun, std::string(option) + ": the definitions have no attribute " + quoted(name) +
                                         (hint.empty() ? "" : "; " + hint));
}

/// The remainder is not negative.
long long remainder(long long number, long long divisor) { return (number % divisor + divisor) % divisor; }

std::optional<double> number_of(const qz_LOG_LogEntry& entry, const char* name) {
  const AttributeValue value = read_attribute(entry, name);
  if (const auto* const integer = std::get_if<long long>(&value)) return static_cast<double>(*integer);
  if (const auto* const number = std::get_if<double>(&value)) return *number;
  return std::nullopt;
}

}  // namespace

CountedBy CountedBy::read(const std::string& by, const std::string& numbers_of, const KnownDefinitions& known) {
  CountedBy counted;
  std::vector<std::string_view> names = known.attribute_names();
  counted.numbers_of = numbers_of;
  if (!numbers_of.empty()) {
    const TypeSet types = require_attribute("--of", numbers_of, known, names).types;
    if (!types.meets(kIntegerTypes) && !types.meets(kFloatTypes)) {
      throw CommandError(kExitCannotRun, "--of: the attribute " + quoted(numbers_of) + " has no numbers");
    }
    counted.has_fractions = types.meets(kFloatTypes);
  }
  for (const ByWord& row : kWords) {
    if (row.word == by) {
      counted.by = row.by;
      return counted;
    }
    names.push_back(row.word);
  }
  counted.by = GroupBy::kAttribute;
  counted.attribute = by.starts_with(kAttributePrefix) ? by.substr(kAttributePrefix.size()) : by;
  counted.has_integers = require_attribute("--by", counted.attribute, known, names).types.is_within(kIntegerTypes);
  return counted;
}

Grouping::Grouping(CountedBy counted, const KnownDefinitions& known, ReaderZone zone)
    : counted_(std::move(counted)),
      known_(known),
      zone_(zone),
      zone_of_hours_(zone),
      times_(std::move(zone), TimeStyle::kIso) {}

void Grouping::count(const qz_LOG_EntryLine& line, GroupTable& table) {
  const qz_LOG_LogEntry& entry = line.GetEntry();
  Group& group = table.count(key_of(line));
  if (line.HasTime()) group.add_moment(entry.GetTimestamp(true).unix_seconds());
  if (counted_.numbers_of.empty()) return;
  const std::optional<double> number = number_of(entry, counted_.numbers_of.c_str());
  if (number) table.add_number(group, *number);
}

void Grouping::count(const ScannedEntry& entry, GroupTable& table) {
  Group& group = table.count(key_of(entry));
  if (entry.has_time) group.add_moment(entry.moment);
  if (counted_.numbers_of.empty()) return;
  const ScannedValue& number = entry.values[counted_.numbers_of == counted_.attribute ? 0 : 1];
  if (number.kind == ScannedValue::Kind::kInteger) table.add_number(group, static_cast<double>(number.integer));
}

GroupKey Grouping::key_of(const qz_LOG_EntryLine& line) {
  const qz_LOG_LogEntry& entry = line.GetEntry();
  switch (counted_.by) {
    case GroupBy::kEvent:
      return key_of_event(line);
    case GroupBy::kLevel:
      return GroupKey::of(entry.GetLogLevel());
    case GroupBy::kHour:
    case GroupBy::kDay:
      return line.HasTime() ? key_of_moment(entry.GetTimestamp(true).unix_seconds()) : GroupKey();
    case GroupBy::kWriter:
      return line.GetWriter()[0] != '\0' ? GroupKey::of(std::string_view(line.GetWriter())) : GroupKey();
    case GroupBy::kAttribute:
      break;
  }
  return key_of_attribute(entry);
}

// Where an attribute has integers in some events only, groups are called by texts.
GroupKey Grouping::key_of_attribute(const qz_LOG_LogEntry& entry) {
  const char* const name = counted_.attribute.c_str();
  const AttributeValue value = read_attribute(entry, name);
  if (std::holds_alternative<std::monostate>(value)) return {};
  if (const auto* const text = std::get_if<StoredText>(&value)) return GroupKey::of(std::string_view(text->text));
  if (counted_.has_integers) return GroupKey::of(std::get<long long>(value));
  value_.clear();
  append_attribute(entry, name, times_, value_);
  return GroupKey::of(std::string_view(value_));
}

GroupKey Grouping::key_of(const ScannedEntry& entry) {
  switch (counted_.by) {
    case GroupBy::kEvent:
      return GroupKey::of(entry.id);
    case GroupBy::kLevel:
      return GroupKey::of(entry.level);
    case GroupBy::kHour:
    case GroupBy::kDay:
      return entry.has_time ? key_of_moment(entry.moment) : GroupKey();
    case GroupBy::kWriter:
      return !entry.writer.empty() ? GroupKey::of(entry.writer) : GroupKey();
    case GroupBy::kAttribute:
      break;
  }
  return key_of_value(entry.values[0]);
}

GroupKey Grouping::key_of_event(const qz_LOG_EntryLine& line) const {
  CountedEvent counted{line.GetEntry().GetEntryID()};
  const KnownEvent* const event = known_.find_event(counted.id);
  if (event != nullptr && event->names.size() > 1) {
    const auto name =
        std::find(event->names.begin(), event->names.end(), event_name(line, known_.find_name(counted.id)));
    if (name != event->names.end()) counted.name = static_cast<std::uint32_t>(name - event->names.begin());
  }
  return GroupKey::of(counted.number());
}

// Hours by their first moments: one that a clock shows twice is two. Days as numbers of days on the reader's clock.
GroupKey Grouping::key_of_moment(long long moment) {
  const long offset = zone_.offset_at(moment);
  const long long clock = moment + offset;
  if (counted_.by == GroupBy::kHour) return GroupKey::of(first_of_hour(moment, offset));
  return GroupKey::of((clock - remainder(clock, kDay)) / kDay);
}

// Where clocks are changed within an hour, what is behind the change is an hour of its own.
long long Grouping::first_of_hour(long long moment, long offset) {
  const long long first = moment - remainder(moment + offset, kHour);
  if (zone_of_hours_.offset_at(first) == offset) return first;
  if (first == changed_hour_ && moment >= behind_change_) return behind_change_;
  long long before = first;
  long long behind = moment;
  while (behind - before > 1) {
    const long long middle = before + (behind - before) / 2;
    (zone_of_hours_.offset_at(middle) == offset ? behind : before) = middle;
  }
  changed_hour_ = first;
  behind_change_ = behind;
  return behind;
}

GroupKey Grouping::key_of_value(const ScannedValue& value) {
  switch (value.kind) {
    case ScannedValue::Kind::kAbsent:
      return {};
    case ScannedValue::Kind::kBool:
      return GroupKey::of(std::string_view(value.truth ? "true" : "false"));
    case ScannedValue::Kind::kText:
      return GroupKey::of(value.text);
    case ScannedValue::Kind::kInteger:
      break;
  }
  if (counted_.has_integers) return GroupKey::of(value.integer);
  value_.clear();
  if (value.is_float) {
    append_floating_number(static_cast<double>(value.integer), value_);
  } else {
    append_signed_number(value.integer, value_);
  }
  return GroupKey::of(std::string_view(value_));
}

}  // namespace qzlog_tool
