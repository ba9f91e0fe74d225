#include "sinks/shown_message.h"

#include "lines/moment_text.h"
#include "sinks/shown_entry.h"
#include "sinks/text_line_format.h"

namespace qzlog {

bool append_shown_message(const qz_LOG_LogEntry& entry, const EntryMarks& marks, const MessageChoice& choice,
                          std::string& room, std::string& out) {
  if (marks.sensitivity == nullptr) {
    return append_message_line(entry, choice.use_default, choice.selector_index, room, out);
  }
  return append_message_line(shown_copy(entry, marks), choice.use_default, choice.selector_index, room, out);
}

std::string told_message(ToldOf kind, const LossTable::Row& row) {
  char since[kMomentText];
  std::string text = std::to_string(row.count) + " entries of event " + std::to_string(row.id) + ", level " +
                     std::to_string(row.level);
  text += kind == ToldOf::kLost ? ", were lost since " : ", were held back since ";
  return text.append(since, write_moment(since, row.since.tv_sec)).append("Z");
}

}  // namespace qzlog
