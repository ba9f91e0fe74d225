#include "tools/ship/record_host.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "qzlog/qz_time.h"
#include "tools/logs/entry_error.h"

namespace qzlog_tool {

namespace {

constexpr std::int64_t kNanosecondsOfSecond = 1'000'000'000;

std::string_view view_of(const qzlog_text& text) { return {text.bytes, text.size}; }

/// What a plug-in asked for must not end the command: what cannot be had is not there.
template <class Function, class Result>
Result call(Result otherwise, Function&& function) noexcept {
  try {
    return function();
  } catch (...) {
    return otherwise;
  }
}

/// The digits behind the seconds of RFC 3339.
std::int64_t fraction_of(std::string_view text) {
  constexpr std::size_t kPoint = std::string_view("2026-11-21T08:15:30").size();
  if (text.size() <= kPoint || text[kPoint] != '.') return 0;
  std::int64_t fraction = 0;
  std::int64_t unit = kNanosecondsOfSecond;
  for (std::size_t at = kPoint + 1; at < text.size() && text[at] >= '0' && text[at] <= '9' && unit > 1; ++at) {
    unit /= 10;
    fraction += (text[at] - '0') * unit;
  }
  return fraction;
}

std::optional<std::int64_t> parse_moment(std::string_view text) {
  qz_Time time;
  time.set_GMT_time_mode(false);
  if (!time.set_to_string_value(std::string(text).c_str()) || !time.is_GMT_time_mode()) return std::nullopt;
  const std::int64_t seconds = time.unix_seconds();
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / kNanosecondsOfSecond - 1;
  if (seconds > kMost || seconds < -kMost) return std::nullopt;
  return seconds * kNanosecondsOfSecond + fraction_of(text);
}

/// Numbers that JSON has no digits for, and those that it has without a point.
void make_number(qzlog_value& value) {
  if (value.kind == QZLOG_INTEGER) value.number = static_cast<double>(value.integer);
  if (value.kind == QZLOG_TEXT) {
    const std::string_view text = view_of(value.text);
    if (text == "NaN") {
      value.number = std::numeric_limits<double>::quiet_NaN();
    } else if (text == "Infinity" || text == "-Infinity") {
      value.number = text.front() == '-' ? -HUGE_VAL : HUGE_VAL;
    } else {
      return;
    }
  }
  value.kind = QZLOG_NUMBER;
}

}  // namespace

RecordMessages::RecordMessages(DefinitionSets* sets)
    : definitions_(sets, nullptr), reader_(qz_LOG_EntryReader::FromSource(*this, "")) {
  reader_.SetLineChoice(definitions_.line_choice());
}

std::size_t RecordMessages::Read(char* buffer, std::size_t size) {
  if (text_.empty()) throw NoMore();
  const std::size_t count = std::min(size, text_.size());
  std::memcpy(buffer, text_.data(), count);
  text_.erase(0, count);
  return count;
}

const std::string* RecordMessages::message(std::string_view line) {
  text_.assign(line).append("\n");
  try {
    if (!reader_.Next(line_)) return nullptr;
    message_ = line_.IsLoss() || line_.IsHeld() ? renderer_.tell_loss(line_) : renderer_.render(line_);
    return &message_;
  } catch (const NoMore&) {  // it is no entry
    return nullptr;
  } catch (const EntryError&) {
    return nullptr;
  }
}

RecordHost::RecordHost(const KnownDefinitions& known, RecordMessages* messages,
                       std::function<void(const std::string&)> warn, std::function<bool()> is_ending)
    : known_(known),
      messages_(messages),
      warn_(std::move(warn)),
      is_ending_(std::move(is_ending)),
      host_{sizeof(qzlog_host), this,           warn_for,   is_ending_for, find_member_for,
            find_attribute_for, attributes_for, moment_for, body_for} {}

const LineValues& RecordHost::values_of(const qzlog_record& record) {
  if (record_ != &record) {
    record_ = nullptr;
    if (values_.read(view_of(record.line))) set_types();
    record_ = &record;
  }
  return values_;
}

/// Of attributes whose types JSON does not tell.
void RecordHost::set_types() {
  for (qzlog_attribute& attribute : values_.attributes()) {
    const KnownAttribute* const known = known_.find_attribute(view_of(attribute.name));
    if (known == nullptr) continue;
    if (known->types.is_within(kFloatTypes)) make_number(attribute.value);
    if (known->types.is_within(kTimeTypes) && attribute.value.kind == QZLOG_TEXT) attribute.value.kind = QZLOG_TIME;
  }
}

void RecordHost::warn(const std::string& text) {
  constexpr std::size_t kMostTexts = 1000;
  if (warned_.size() < kMostTexts && warned_.insert(text).second) warn_(text);
}

bool RecordHost::find_moment(const qzlog_record& record, std::int64_t& nanoseconds) {
  const bool is_entry = record.id != 0 || record.level >= 0;
  const qzlog_value value = values_of(record).find_member(is_entry ? "time" : "written");
  if (value.kind != QZLOG_TEXT) return false;
  const std::optional<std::int64_t> moment = parse_moment(view_of(value.text));
  if (!moment) return false;
  nanoseconds = *moment;
  return true;
}

void RecordHost::warn_for(void* context, const char* text) {
  call(0, [&] {
    self(context).warn(text);
    return 0;
  });
}

int RecordHost::is_ending_for(void* context) {
  return call(0, [&] { return self(context).is_ending_() ? 1 : 0; });
}

qzlog_value RecordHost::find_member_for(void* context, const qzlog_record* record, const char* name) {
  return call(qzlog_value{}, [&] { return self(context).values_of(*record).find_member(name); });
}

qzlog_value RecordHost::find_attribute_for(void* context, const qzlog_record* record, const char* name) {
  return call(qzlog_value{}, [&] { return self(context).values_of(*record).find_attribute(name); });
}

const qzlog_attribute* RecordHost::attributes_for(void* context, const qzlog_record* record, size_t* count) {
  *count = 0;
  return call(static_cast<const qzlog_attribute*>(nullptr), [&]() -> const qzlog_attribute* {
    const auto& attributes = self(context).values_of(*record).attributes();
    *count = attributes.size();
    return attributes.empty() ? nullptr : attributes.data();
  });
}

int RecordHost::moment_for(void* context, const qzlog_record* record, int64_t* nanoseconds) {
  return call(0, [&] { return self(context).find_moment(*record, *nanoseconds) ? 1 : 0; });
}

int RecordHost::body_for(void* context, const qzlog_record* record, qzlog_text* body) {
  return call(0, [&] {
    RecordMessages* const messages = self(context).messages_;
    const std::string* const message = messages != nullptr ? messages->message(view_of(record->line)) : nullptr;
    if (message == nullptr) return 0;
    *body = {message->data(), message->size()};
    return 1;
  });
}

}  // namespace qzlog_tool
