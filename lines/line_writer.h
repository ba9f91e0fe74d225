#ifndef QZLOG_LINES_LINE_WRITER_H
#define QZLOG_LINES_LINE_WRITER_H

#include <string>

#include "entry/logentry_i.h"
#include "lines/entry_marks.h"
#include "qzlog/logentry.h"

namespace qzlog {

/// Which message of an entry its caller chose.
struct MessageChoice {
  bool use_default = false;
  unsigned selector_index = 0;
};

/// Appends an entry's part of a line to `out`, from `"id":` to the brace that closes the object, without a line end;
/// the members of a LineEnvelope stand in front of it. With the conditions and exceptions of
/// qz_LOG_LogEntry::AppendJson. The digest of the definitions is at hand for LineEnvelope afterwards. Different threads
/// may use different entries at once.
void append_entry_body(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out);

/// What stands in front of the member "id".
enum class LineBeginning { kNone, kBrace };

/// The same for an entry's implementation, with what is said of its event and attributes.
void append_entry_json(LineBeginning beginning, const _qz_LOG_log_entry_imp& entry, const MessageChoice& choice,
                       const EntryMarks& marks, std::string& out);

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_WRITER_H
