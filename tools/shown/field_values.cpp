#include "tools/shown/field_values.h"

#include <charconv>
#include <cmath>

#include "lines/level_name.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/logs/event_name.h"
#include "tools/logs/line_kind.h"

namespace qzlog_tool {

namespace {

template <class Number>
void append_digits(Number number, std::string& out) {
  char text[32];
  out.append(text, std::to_chars(text, text + sizeof text, number).ptr);
}

bool append_text(std::string_view text, std::string& out) {
  out += text;
  return !text.empty();
}

/// The parts of HOST/PID/START, of which the host may hold a slash.
struct Writer {
  std::string_view host;
  std::string_view pid;
};

Writer parts_of_writer(std::string_view writer) {
  const std::size_t start = writer.rfind('/');
  if (start == std::string_view::npos || start == 0) return {};
  const std::size_t pid = writer.rfind('/', start - 1);
  if (pid == std::string_view::npos) return {};
  return {writer.substr(0, pid), writer.substr(pid + 1, start - pid - 1)};
}

/// Reads a value by the member that is for its type.
template <class Value>
bool read(const qz_LOG_LogEntry& entry, const char* name, bool (qz_LOG_LogEntry::*get)(const char*, Value&) const,
          Value& value) {
  return (entry.*get)(name, value);
}

template <class Value>
bool append_integer(const qz_LOG_LogEntry& entry, const char* name,
                    bool (qz_LOG_LogEntry::*get)(const char*, Value&) const, std::string& out) {
  Value value = 0;
  if (!read(entry, name, get, value)) return false;
  append_digits(static_cast<std::int64_t>(value), out);
  return true;
}

// A `char` has a sign on some hosts only.
bool append_small_integer(const qz_LOG_LogEntry& entry, const char* name, std::string& out) {
  char value = 0;
  if (!entry.GetAttrib1(name, value)) return false;
  append_digits(static_cast<int>(static_cast<signed char>(value)), out);
  return true;
}

bool append_bool(const qz_LOG_LogEntry& entry, const char* name, std::string& out) {
  bool value = false;
  if (!entry.GetAttribBool(name, value)) return false;
  out += value ? "true" : "false";
  return true;
}

bool append_float(const qz_LOG_LogEntry& entry, const char* name, std::string& out) {
  double value = 0;
  if (!entry.GetAttribFloat8(name, value)) return false;
  append_floating_number(value, out);
  return true;
}

// A date and a time of day are those that messages show. A timestamp is a moment, which the reader's clock shows too.
bool append_time(const qz_LOG_LogEntry& entry, const char* name, qz_AttributeType type, ShownTimes& times,
                 std::string& out) {
  qz_Time value;
  if (!entry.GetAttribTime(name, value)) return false;
  const long long moment = value.unix_seconds();
  if (type == TypeDate) {
    ShownTimes::append_date(moment, out);
  } else if (type == TypeTime) {
    ShownTimes::append_clock(moment, out);
  } else {
    times.append(moment, out);
  }
  return true;
}

bool append_stored_text(const qz_LOG_LogEntry& entry, const char* name, qz_AttributeType type, std::string& out) {
  const char* value = nullptr;
  const bool is_set = type >= TypeMBChar32 ? entry.GetAttribMBStr(name, value) : entry.GetAttribStr(name, value);
  if (is_set) out += value;
  return is_set;
}

}  // namespace

void append_number(std::uint64_t number, std::string& out) { append_digits(number, out); }
void append_signed_number(std::int64_t number, std::string& out) { append_digits(number, out); }

// With a point or an exponent, so that it is seen not to be an integer, as in lines.
void append_floating_number(double number, std::string& out) {
  if (!std::isfinite(number)) {
    out += std::isnan(number) ? "NaN" : number > 0 ? "Infinity" : "-Infinity";
    return;
  }
  const std::size_t begin = out.size();
  append_digits(number, out);
  if (out.find_first_of(".e", begin) == std::string::npos) out += ".0";
}

bool append_attribute(const qz_LOG_LogEntry& entry, const char* name, ShownTimes& times, std::string& out) {
  qz_AttributeType type = TypeUnknown;
  if (entry.CheckAttribute(name, type) != 0) return false;
  switch (type) {
    case TypeBool:
      return append_bool(entry, name, out);
    case TypeUInt1:
      return append_integer<unsigned char>(entry, name, &qz_LOG_LogEntry::GetAttrib1u, out);
    case TypeSInt1:
      return append_small_integer(entry, name, out);
    case TypeUInt2:
      return append_integer<unsigned short>(entry, name, &qz_LOG_LogEntry::GetAttrib2u, out);
    case TypeSInt2:
      return append_integer<short>(entry, name, &qz_LOG_LogEntry::GetAttrib2, out);
    case TypeUInt4:
      return append_integer<unsigned>(entry, name, &qz_LOG_LogEntry::GetAttrib4u, out);
    case TypeSInt4:
      return append_integer<int>(entry, name, &qz_LOG_LogEntry::GetAttrib4, out);
    case TypeFloat:
      return append_float(entry, name, out);
    case TypeDate:
    case TypeTime:
    case TypeTimestamp:
      return append_time(entry, name, type, times, out);
    case TypeUnknown:
    case TypeGUID:
      return false;
    default:
      return append_stored_text(entry, name, type, out);
  }
}

bool FieldValues::append(const FieldChoice& choice, const ShownLine& shown, std::string& out) {
  const qz_LOG_EntryLine& line = shown.line;
  switch (choice.field) {
    case ShownField::kMessage:
      out += shown.message;
      return true;
    case ShownField::kTime:
    case ShownField::kLocalTime:
    case ShownField::kWritten:
      return append_time(choice.field, line, out);
    case ShownField::kAttribute:
      return is_entry(line) && append_attribute(line.GetEntry(), choice.attribute.c_str(), times_, out);
    case ShownField::kLevel:
    case ShownField::kLevelName:
    case ShownField::kId:
    case ShownField::kName:
    case ShownField::kSummary:
    case ShownField::kMask:
      return append_of_entry(choice.field, line, out);
    default:
      return append_of_line(choice.field, shown, out);
  }
}

// The time of writing takes the place of that of an entry that has none.
bool FieldValues::append_time(ShownField field, const qz_LOG_EntryLine& line, std::string& out) {
  WrittenMoment moment;
  if (field != ShownField::kWritten && line.HasTime()) {
    moment.seconds = line.GetEntry().GetTimestamp(true).unix_seconds();
  } else if (!read_moment(line.GetWritten(), moment)) {
    return false;
  }
  if (field == ShownField::kLocalTime) {
    times_.append_local(moment.seconds, out);
  } else {
    times_.append(moment.seconds, field == ShownField::kWritten ? moment.fraction : std::string_view(), out);
  }
  return true;
}

bool FieldValues::append_of_entry(ShownField field, const qz_LOG_EntryLine& line, std::string& out) {
  if (!is_entry(line)) return false;
  const qz_LOG_LogEntry& entry = line.GetEntry();
  switch (field) {
    case ShownField::kLevel:
      append_number(entry.GetLogLevel(), out);
      return true;
    case ShownField::kLevelName:
      return append_text(qzlog::level_name(entry.GetLogLevel()), out);
    case ShownField::kId:
      append_number(entry.GetEntryID(), out);
      return true;
    case ShownField::kName:
      return append_text(name_of(line), out);
    case ShownField::kSummary:
      return append_text(summary_of(line), out);
    default:
      out += qzlog_compiler::bits_text(entry.GetPropertyMask());
      return true;
  }
}

bool FieldValues::append_of_line(ShownField field, const ShownLine& shown, std::string& out) {
  const qz_LOG_EntryLine& line = shown.line;
  switch (field) {
    case ShownField::kWriter:
      return append_text(line.GetWriter(), out);
    case ShownField::kHost:
      return append_text(parts_of_writer(line.GetWriter()).host, out);
    case ShownField::kPid:
      return append_text(parts_of_writer(line.GetWriter()).pid, out);
    case ShownField::kDefinitions:
      return append_text(line.GetDefinitions(), out);
    case ShownField::kFile:
      return append_text(shown.file_name(), out);
    case ShownField::kLine:
      append_number(shown.line_number(), out);
      return true;
    default:
      if (line.HasSeq()) append_number(line.GetSeq(), out);
      return line.HasSeq();
  }
}

const ShownEvent* FieldValues::event_of(const qz_LOG_EntryLine& line) {
  const std::uint32_t id = line.GetEntry().GetEntryID();
  if (!has_event_ || id != event_id_) {
    event_ = events_.find(id);
    event_id_ = id;
    has_event_ = true;
  }
  return event_;
}

std::string_view FieldValues::name_of(const qz_LOG_EntryLine& line) {
  const ShownEvent* const event = event_of(line);
  return event_name(line, event != nullptr ? event->name() : std::string_view());
}

std::string_view FieldValues::summary_of(const qz_LOG_EntryLine& line) {
  const ShownEvent* const event = event_of(line);
  return event != nullptr ? event->summary(event_name(line, event->name())) : std::string_view();
}

}  // namespace qzlog_tool
