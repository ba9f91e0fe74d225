#ifndef QZLOG_SINKS_JOURNAL_FORM_H
#define QZLOG_SINKS_JOURNAL_FORM_H

#include <atomic>
#include <string>

#include "lines/entry_marks.h"
#include "lines/line_writer.h"
#include "sinks/line_forms.h"

namespace qzlog {

/// Entries as messages to journald, but for the beginning of their first field, QZLOG_ENTRY: JournalDestination puts it
/// in front, with the head of the line. So the text is the rest of the line, and the other fields.
class JournalForm : public LineForm {
 public:
  /// Of a product of this name, or "" for none. std::bad_alloc.
  explicit JournalForm(std::string product);

  /// A message that cannot be rendered is counted; its text says so.
  void append_entry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out) override;
  /// One message for all rows.
  void append_told(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) const override;
  unsigned long long failures() const { return failures_.load(std::memory_order_relaxed); }

 private:
  class MessageIds;
  struct Rooms;

  void append_message(const qz_LOG_LogEntry& entry, const EntryMarks& marks, const MessageChoice& choice, Rooms& rooms,
                      std::string& out);

  const std::string product_;
  const unsigned long long number_;  // no other form of the process has it
  std::atomic<unsigned long long> failures_{0};
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_JOURNAL_FORM_H
