#include "sinks/syslog_parts.h"

#include <string_view>

#include <unicode/unistr.h>

#include "lines/entry_access.h"
#include "lines/entry_marks.h"
#include "lines/json_walk.h"
#include "lines/stored_code_page.h"
#include "message/code_page.h"
#include "sinks/shown_message.h"
#include "sinks/syslog_name.h"
#include "sinks/syslog_text.h"

namespace qzlog {

namespace {

/// Memory beyond this is not kept.
constexpr std::size_t kMostKept = 64U << 10;

constexpr std::string_view kNoName = "-";

/// A number or a word of JSON, as it stands there.
std::string_view scalar_at(const JsonPlace& place, std::string_view line) {
  const auto begin = static_cast<std::size_t>(place.address() - line.data());
  return line.substr(begin, line.find_first_of(",}", begin) - begin);
}

void append_parameter(std::string_view name, const JsonPlace& place, SyslogParts& parts) {
  if (is_own_syslog_name(name)) return;
  std::string& out = parts.parameters;
  out += ' ';
  append_syslog_name(name, out);
  out += "=\"";
  const bool is_text = place.kind() == JsonKind::kText;
  append_syslog_value(is_text ? place.value(parts.value).text : scalar_at(place, parts.line), out);
  out += '"';
  parts.parameter_ends.push_back(out.size());
}

/// What the line says of attributes is what may be shown of them. A name in front of them has its quotes escaped, so
/// that it holds no such text.
void append_parameters(SyslogParts& parts) {
  constexpr std::string_view kAttributes = ",\"attributes\":";
  const std::string_view line = parts.line;
  const JsonPlace attributes(line.substr(line.find(kAttributes) + kAttributes.size()));
  attributes.for_each_member(parts.key,
                             [&](std::string_view name, JsonPlace value) { append_parameter(name, value, parts); });
}

/// The line without the brace that begins it, in front of which the head stands.
void append_entry(SyslogParts& parts) { append_syslog_line(std::string_view(parts.line).substr(1), parts.entry); }

/// The message's line may still have tabs, and in other code pages than UTF-8 whatever becomes a control character.
void make_text(const qz_LOG_LogEntry& entry, const EntryMarks& marks, const MessageChoice& choice, SyslogParts& parts) {
  parts.value.clear();
  parts.is_rendered = append_shown_message(entry, marks, choice, parts.message, parts.value);
  const StoredCodePage& code_page = StoredCodePage::current();
  if (!code_page.is_utf8()) {
    parts.message.clear();
    decode_text(parts.value.c_str(), code_page.name()).toUTF8String(parts.message);
    parts.value.swap(parts.message);
  }
  append_syslog_message(parts.value, parts.text);
}

}  // namespace

void SyslogParts::clear() {
  for (std::string* const each : {&event, &entry, &parameters, &text, &line, &key, &value, &message}) {
    if (each->capacity() > kMostKept) std::string().swap(*each);
    each->clear();
  }
  parameter_ends.clear();
  is_rendered = true;
}

void make_syslog_parts(const qz_LOG_LogEntry& entry, const MessageChoice& choice, SyslogData data, SyslogParts& parts) {
  parts.clear();
  parts.id = entry.GetEntryID();
  parts.level = entry.GetLogLevel();
  const EntryMarks marks = marks_of(EntryAccess::of(entry).require_definition());
  append_syslog_name(marks.event_name != nullptr ? marks.event_name->text() : kNoName, parts.event);
  if (data == SyslogData::kEntry) {
    parts.line += '{';
    append_entry_body(entry, choice.use_default, choice.selector_index, parts.line);
    append_entry(parts);
    append_parameters(parts);
  }
  make_text(entry, marks, choice, parts);
}

void make_syslog_parts(ToldOf kind, const LossTable::Row& row, SyslogData data, SyslogParts& parts) {
  parts.clear();
  parts.id = row.id;
  parts.level = row.level;
  parts.event = kNoName;
  if (data == SyslogData::kEntry) {
    parts.line += '{';
    append_told_body(kind, {row}, parts.line);
    append_entry(parts);
  }
  parts.text = told_message(kind, row);
}

}  // namespace qzlog
