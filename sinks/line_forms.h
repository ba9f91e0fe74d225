#ifndef QZLOG_SINKS_LINE_FORMS_H
#define QZLOG_SINKS_LINE_FORMS_H

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/no_copies.h"
#include "qzlog/logentry.h"
#include "sinks/loss_table.h"
#include "sinks/text_line_format.h"

namespace qzlog {

/// How entries become lines. Any thread.
class LineForm : public qz_UTIL_no_inadvertant_copies {
 public:
  virtual ~LineForm() = default;
  /// Appends an entry's line without a line break. Throws what making it throws; `out` then has a part of it.
  virtual void append_entry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                            std::string& out) = 0;
  /// Appends lines with their line breaks that tell of entries.
  virtual void append_told(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) const = 0;
};

class JsonForm : public LineForm {
 public:
  void append_entry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out) override;
  /// {"lost":[{"id":1001,"level":3,"count":12,"since":"TIME"}]}, or the same with "held".
  void append_told(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) const override;
};

class TextForm : public LineForm {
 public:
  /// With the exceptions of TextLineFormat.
  explicit TextForm(std::string_view format) : format_(format) {}

  /// A message that cannot be rendered is counted; its line says so.
  void append_entry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out) override;
  /// A line for each row, with a message of its own.
  void append_told(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) const override;
  unsigned long long failures() const { return failures_.load(std::memory_order_relaxed); }

 private:
  TextLineFormat format_;
  std::atomic<unsigned long long> failures_{0};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_LINE_FORMS_H
