#ifndef QZLOG_SINKS_TEXT_LINE_FORMAT_H
#define QZLOG_SINKS_TEXT_LINE_FORMAT_H

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/logentry.h"

namespace qzlog {

/// How a line is put together: "{time} {level} {id} {name} [{pid}:{tid}] {message}". Different threads may use one at
/// once.
class TextLineFormat {
 public:
  static constexpr std::size_t kMostBytes = 1024;

  /// What a line tells of.
  struct Line {
    unsigned id;
    unsigned level;
    std::time_t time;  ///< 0: that of writing takes its place
    std::timespec written;
    std::string_view name;     ///< empty when it is not known
    std::string_view message;  ///< one line
  };

  /// Throws QZX_logging_illegal_argument, which begins with the name of the setting, "format".
  explicit TextLineFormat(std::string_view format);

  /// Appends the line, without a line break.
  void append(const Line& line, std::string& out) const;

 private:
  enum class Field { kNone, kTime, kLocalTime, kWritten, kLevel, kLevelName, kId, kName, kProcess, kThread, kMessage };
  /// A text and the field behind it.
  struct Piece {
    std::string text;
    Field field = Field::kNone;
  };
  class Parts;
  struct FieldName {
    std::string_view name;
    Field field;
  };
  static const FieldName kFieldNames[];

  static Field field_of(std::string_view name, std::size_t position);
  static void append_field(Field field, const Line& line, std::string& out);

  std::vector<Piece> pieces_;
};

/// Appends the message of an entry as one line: line breaks become "\n" and "\r", zero bytes "\0", and in UTF-8 other
/// control characters but the tab "\x1B". When it cannot be rendered its place is taken by a text that says so and why,
/// and false is returned. `room` is memory to use again.
bool append_message_line(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& room,
                         std::string& out);

}  // namespace qzlog

#endif  // QZLOG_SINKS_TEXT_LINE_FORMAT_H
