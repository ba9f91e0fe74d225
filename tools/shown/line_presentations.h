#ifndef QZLOG_TOOLS_SHOWN_LINE_PRESENTATIONS_H
#define QZLOG_TOOLS_SHOWN_LINE_PRESENTATIONS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "tools/shown/line_format.h"
#include "tools/shown/presentation.h"

namespace qzlog_tool {

// What the arguments refer to has to outlive the presentations.

/// The message alone, as it is: line feeds and carriage returns inside become \n and \r.
class MessagePresentation : public Presentation {
 public:
  bool shows_message() const override { return true; }
  std::size_t append(const ShownLine& shown, std::string& out) override;
};

/// Lines that a format puts together.
class FormatPresentation : public Presentation {
 public:
  FormatPresentation(LineFormat format, const ShownPlace& place, const ShownEvents& events, ShownTimes& times)
      : format_(std::move(format)), is_terminal_(place.is_terminal), values_(events, times) {}

  bool shows_message() const override { return format_.shows_message(); }
  std::size_t append(const ShownLine& shown, std::string& out) override;

 private:
  LineFormat format_;
  bool is_terminal_;
  FieldValues values_;
};

/// The line as it came, with "level_name" and "message" added, and "name" where it has none.
class JsonPresentation : public Presentation {
 public:
  JsonPresentation(const ShownEvents& events, ShownTimes& times) : values_(events, times) {}

  bool shows_message() const override { return true; }
  std::size_t append(const ShownLine& shown, std::string& out) override;

 private:
  FieldValues values_;
};

/// Several lines, with everything that is known:
///
///     2026-11-21T09:15:30+01:00 error DISK_FULL (1001)
///       Disk vol1 is full: 0 of 4096 blocks free
///       meaning: A volume has no free blocks left.
///       Name: "vol1" (Char32)
///       Free: 0 (UInt4)
///       mask 0x00000005, writer web1/4711/1795853730, seq 7, at entries.jsonl:1
///
/// and an empty line.
class LongPresentation : public Presentation {
 public:
  LongPresentation(const ShownEvents& events, ShownTimes& times)
      : events_(events), times_(times), values_(events, times) {}

  bool shows_message() const override { return true; }
  std::size_t append(const ShownLine& shown, std::string& out) override;

 private:
  void append_title(const ShownLine& shown, std::string& out);
  void append_summary(const ShownLine& shown, std::string& out);
  void append_attributes(const qz_LOG_EntryLine& line, std::string& out);
  void append_attribute_line(const qz_LOG_EntryLine& line, const std::string& name, std::string& out);
  void append_origin(const ShownLine& shown, std::string& out);
  void append_value(ShownField field, const ShownLine& shown, std::string& out);

  const ShownEvents& events_;
  ShownTimes& times_;
  FieldValues values_;
  std::string value_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_LINE_PRESENTATIONS_H
