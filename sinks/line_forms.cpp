#include "sinks/line_forms.h"

#include "definitions/ldf_def.h"
#include "foundation/thread_instance.h"
#include "lines/entry_access.h"
#include "lines/entry_marks.h"
#include "sinks/shown_message.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

/// What a thread makes of a message; the memory is used again.
struct MessageRooms {
  static constexpr std::size_t kMostKept = 64U << 10;

  void limit() {
    for (std::string* text : {&message, &line}) {
      if (text->capacity() > kMostKept) std::string().swap(*text);
      text->clear();
    }
  }
  std::string message;
  std::string line;
};

}  // namespace

void JsonForm::append_entry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out) {
  entry.AppendJson(out, use_default, selector_index);
}

void JsonForm::append_told(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) const {
  out += '{';
  append_told_body(kind, rows, out);
  out += '\n';
}

void TextForm::append_entry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out) {
  const EntryMarks marks = marks_of(EntryAccess::of(entry).require_definition());
  with_thread_instance<MessageRooms>([&](MessageRooms& rooms) {
    rooms.limit();
    if (!append_shown_message(entry, marks, {use_default, selector_index}, rooms.message, rooms.line))
      failures_.fetch_add(1, std::memory_order_relaxed);
    format_.append({entry.GetEntryID(), entry.GetLogLevel(), entry.GetTimestamp(true).unix_seconds(), SinkClock::now(),
                    marks.event_name != nullptr ? marks.event_name->text() : "", rooms.line},
                   out);
  });
}

void TextForm::append_told(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) const {
  for (const LossTable::Row& row : rows) {
    format_.append({row.id, row.level, 0, SinkClock::now(), "", told_message(kind, row)}, out);
    out += '\n';
  }
}

}  // namespace qzlog
