#ifndef QZLOG_TOOLS_SHOWN_FIELD_VALUES_H
#define QZLOG_TOOLS_SHOWN_FIELD_VALUES_H

#include <cstdint>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "tools/shown/shown_events.h"
#include "tools/shown/shown_field.h"
#include "tools/shown/shown_times.h"

namespace qzlog_tool {

/// A line that is shown, and its readable message in UTF-8: of a line that tells of lost entries what it tells.
struct ShownLine {
  const qz_LOG_EntryLine& line;
  std::string_view message;
  const char* file = nullptr;  ///< where it was read first, when `line` was read from a copy; else null
  std::uint64_t number = 0;    ///< of the line there

  const char* file_name() const { return file != nullptr ? file : line.GetFile(); }
  std::uint64_t line_number() const { return file != nullptr ? number : line.GetLine(); }
};

/// Looks up what fields show of lines. Takes no memory but that of the text. One thread uses it.
class FieldValues {
 public:
  /// Both have to outlive it.
  FieldValues(const ShownEvents& events, ShownTimes& times) : events_(events), times_(times) {}

  /// Appends a field's value, which may hold anything. False, with the text as it was, where the line has none.
  bool append(const FieldChoice& choice, const ShownLine& shown, std::string& out);

  /// What the line's event is called, "" where nobody knows.
  std::string_view name_of(const qz_LOG_EntryLine& line);
  /// What the definitions say that it means, "" likewise.
  std::string_view summary_of(const qz_LOG_EntryLine& line);

 private:
  bool append_time(ShownField field, const qz_LOG_EntryLine& line, std::string& out);
  bool append_of_entry(ShownField field, const qz_LOG_EntryLine& line, std::string& out);
  bool append_of_line(ShownField field, const ShownLine& shown, std::string& out);
  const ShownEvent* event_of(const qz_LOG_EntryLine& line);

  const ShownEvents& events_;
  ShownTimes& times_;
  // Lines near each other are often of one event.
  const ShownEvent* event_ = nullptr;
  std::uint32_t event_id_ = 0;
  bool has_event_ = false;
};

/// Appends the value of an attribute of an entry, as its type writes it: digits, true and false, the fewest digits that
/// read back as the same floating point number, a text as it is stored, a date or a time of day in GMT, a timestamp on
/// the reader's clock. False where it is not set.
bool append_attribute(const qz_LOG_LogEntry& entry, const char* name, ShownTimes& times, std::string& out);

void append_number(std::uint64_t number, std::string& out);
void append_signed_number(std::int64_t number, std::string& out);
void append_floating_number(double number, std::string& out);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_FIELD_VALUES_H
