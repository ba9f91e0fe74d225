#include "tools/shown/line_presentations.h"

#include <algorithm>

#include "lines/json_text.h"
#include "lines/level_name.h"
#include "qzlog/logentry.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/logs/line_kind.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kNoValue = "-";
constexpr std::string_view kJsonBlanks = " \t\r\n";

bool is_text(qz_AttributeType type) { return type >= TypeChar32 && type <= TypeMBChar2K; }

/// The line without its last brace. What stands between the parts of an object may be carriage returns, which would end
/// the line for some readers.
void append_open_object(std::string_view source, std::string& out) {
  source = source.substr(0, source.find_last_not_of(kJsonBlanks) + 1);
  source.remove_suffix(source.ends_with('}') ? 1 : 0);
  const std::size_t begin = out.size();
  out += source;
  std::replace(out.begin() + static_cast<std::ptrdiff_t>(begin), out.end(), '\r', ' ');
}

/// Whether a line has a member of this name. Where it stands within a text, the quotes around it are escaped.
bool has_member(std::string_view line, std::string_view name) {
  for (std::size_t at = line.find(name, 1); at != std::string_view::npos; at = line.find(name, at + 1)) {
    const std::string_view behind = line.substr(at + name.size());
    if (line[at - 1] != '"' || !behind.starts_with('"')) continue;
    const std::size_t next = behind.find_first_not_of(kJsonBlanks, 1);
    if (next != std::string_view::npos && behind[next] == ':') return true;
  }
  return false;
}

/// Whether an attribute was set for the entry's time, by this process: it says where the reader is, not the writer.
bool is_set_by_time(const qz_LOG_EntryLine& line, std::string_view name) {
  if (!line.HasTime() || (name != "TIMEZONE_DIFFERENCE" && name != "DAYLIGHT_SAVING_ACTIVE")) return false;
  return !has_member({line.GetSource(), line.GetSourceLength()}, name);
}

void append_text_member(std::string_view name, std::string_view text, std::string& out) {
  out.append(",\"").append(name).append("\":");
  qzlog::append_json_text(text, out);
}

}  // namespace

std::size_t MessagePresentation::append(const ShownLine& shown, std::string& out) {
  append_safely(shown.message, CellSafety::kLine, out);
  out += '\n';
  return 0;
}

std::size_t FormatPresentation::append(const ShownLine& shown, std::string& out) {
  const std::size_t begin = out.size();
  format_.append(shown, is_terminal_, values_, out);
  const std::size_t size = out.size() - begin;
  out += '\n';
  return size;
}

std::size_t JsonPresentation::append(const ShownLine& shown, std::string& out) {
  const qz_LOG_EntryLine& line = shown.line;
  append_open_object({line.GetSource(), line.GetSourceLength()}, out);
  if (is_entry(line)) {
    append_text_member("level_name", qzlog::level_name(line.GetEntry().GetLogLevel()), out);
    const std::string_view name = *line.GetName() == '\0' ? values_.name_of(line) : std::string_view();
    if (!name.empty()) append_text_member("name", name, out);
  }
  append_text_member("message", shown.message, out);
  out += "}\n";
  return 0;
}

std::size_t LongPresentation::append(const ShownLine& shown, std::string& out) {
  const std::size_t begin = out.size();
  append_title(shown, out);
  const std::size_t coloured = out.size() - begin;
  out += "\n  ";
  append_safely(shown.message, CellSafety::kLine, out);
  out += '\n';
  if (is_entry(shown.line)) {
    append_summary(shown, out);
    append_attributes(shown.line, out);
  }
  append_origin(shown, out);
  out += '\n';
  return coloured;
}

/// "2026-11-21T09:15:30+01:00 error DISK_FULL (1001)"
void LongPresentation::append_title(const ShownLine& shown, std::string& out) {
  append_value(ShownField::kTime, shown, out);
  out += ' ';
  if (!is_entry(shown.line)) {
    out += shown.line.IsHeld() ? "entries held back" : "lost entries";
    return;
  }
  append_value(ShownField::kLevelName, shown, out);
  out += ' ';
  append_value(ShownField::kName, shown, out);
  out += " (";
  append_value(ShownField::kId, shown, out);
  out += ')';
}

void LongPresentation::append_summary(const ShownLine& shown, std::string& out) {
  const std::string_view summary = values_.summary_of(shown.line);
  if (summary.empty()) return;
  out += "  meaning: ";
  append_safely(summary, CellSafety::kLine, out);
  out += '\n';
}

// In the order of the definitions; the library's own order is made anew for each entry.
void LongPresentation::append_attributes(const qz_LOG_EntryLine& line, std::string& out) {
  const ShownEvent* const event = events_.find(line.GetEntry().GetEntryID());
  if (event != nullptr) {
    for (const std::string& name : event->attributes) append_attribute_line(line, name, out);
  }
  for (const std::string& name : events_.globals()) append_attribute_line(line, name, out);
}

/// "Name: "vol1" (Char32)"; nothing for one that is not set.
void LongPresentation::append_attribute_line(const qz_LOG_EntryLine& line, const std::string& name, std::string& out) {
  if (is_set_by_time(line, name)) return;
  const qz_LOG_LogEntry& entry = line.GetEntry();
  qz_AttributeType type = TypeUnknown;
  value_.clear();
  if (entry.CheckAttribute(name.c_str(), type) != 0 || !append_attribute(entry, name.c_str(), times_, value_)) return;
  out += "  ";
  append_safely(name, CellSafety::kLine, out);
  out += ": ";
  if (is_text(type)) {
    qzlog::append_json_text(value_, out);
  } else {
    out += value_;
  }
  out.append(" (").append(qzlog_compiler::short_type_name(type)).append(")\n");
}

/// "mask 0x00000005, writer web1/4711/1795853730, seq 7 ... at entries.jsonl:1"
void LongPresentation::append_origin(const ShownLine& shown, std::string& out) {
  constexpr struct {
    std::string_view title;
    ShownField field;
  } kMembers[] = {
      {"mask ", ShownField::kMask},       {"writer ", ShownField::kWriter},           {"seq ", ShownField::kSeq},
      {"written ", ShownField::kWritten}, {"definitions ", ShownField::kDefinitions}, {"at ", ShownField::kFile}};
  std::string_view between = "  ";
  for (const auto& [title, field] : kMembers) {
    value_.clear();
    if (!values_.append({field, {}}, shown, value_)) continue;
    out.append(between).append(title);
    append_safely(value_, CellSafety::kLine, out);
    between = ", ";
  }
  out += shown.file_name()[0] != '\0' ? ":" : between == "  " ? "  line " : ", line ";
  append_number(shown.line_number(), out);
  out += '\n';
}

void LongPresentation::append_value(ShownField field, const ShownLine& shown, std::string& out) {
  value_.clear();
  if (!values_.append({field, {}}, shown, value_)) value_ = kNoValue;
  append_safely(value_, CellSafety::kLine, out);
}

}  // namespace qzlog_tool
