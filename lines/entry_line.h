#ifndef QZLOG_LINES_ENTRY_LINE_H
#define QZLOG_LINES_ENTRY_LINE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "lines/entry_builder.h"
#include "lines/line_cutter.h"
#include "lines/line_parser.h"
#include "lines/lost_entries.h"
#include "qzlog/entry_lines.h"

/// What a line holds, and all that reading it needs: what took memory for one line serves the next.
class QZLOG_NO_EXPORT qz_LOG_EntryLine::Implementation {
 public:
  using FileName = std::shared_ptr<const std::string>;

  /// The line is none yet.
  void clear();
  /// Reads a line. Throws LineFault for one that is none, and what the library throws; it is to be cleared then.
  void read(const qzlog::LineCutter::Line& line, const FileName& file);

  const qz_LOG_LogEntry& entry() const { return *entry_; }
  const qzlog::LineFields& fields() const { return fields_; }
  const std::vector<qzlog::LostEntries>& lost() const { return lost_; }
  const char* file() const { return file_ != nullptr ? file_->c_str() : ""; }
  std::uint64_t number() const { return number_; }
  std::uint64_t offset() const { return offset_; }
  std::string_view source() const { return source_; }

 private:
  qzlog::LineParser parser_;
  qzlog::EntryBuilder builder_;
  qzlog::LineFields fields_;
  const qz_LOG_LogEntry* entry_ = &builder_.spare_entry();
  std::vector<qzlog::LostEntries> lost_;
  FileName file_;
  std::uint64_t number_ = 0;
  std::uint64_t offset_ = 0;
  std::string_view source_;
};

#endif  // QZLOG_LINES_ENTRY_LINE_H
