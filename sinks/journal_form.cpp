#include "sinks/journal_form.h"

#include <algorithm>
#include <array>
#include <utility>

#include "foundation/itoa.h"
#include "foundation/thread_instance.h"
#include "lines/entry_access.h"
#include "lines/line_writer.h"
#include "sinks/journal_fields.h"
#include "sinks/journal_names.h"
#include "sinks/shown_message.h"
#include "sinks/syslog_severity.h"

namespace qzlog {

namespace {

constinit std::atomic<unsigned long long> latest_number{0};

void append_number_field(std::string_view name, unsigned number, std::string& out) {
  char digits[kMaxIntegerText];
  JournalField field(name, out);
  out.append(digits, write_number(digits, number));
  field.end();
}

void append_text_field(std::string_view name, std::string_view text, std::string& out) {
  JournalField field(name, out);
  append_utf8_text(text, out);
  field.end();
}

/// Without the question for sensitive attributes where the entry has none: what hides them copies the entry.
EntryMarks marks_for(const _qz_LOG_log_entry_imp& entry) {
  const _qz_LOG_log_definition& definition = entry.require_definition();
  EntryMarks marks = marks_of(definition);
  if (marks.sensitivity == nullptr) return marks;
  bool has_any = false;
  entry.for_each_value([&](const KnownName* name, const _qz_LOG_type_base&) {
    has_any = has_any || marks.sensitivity(definition, name) != Sensitivity::kKeep;
  });
  if (!has_any) marks.sensitivity = nullptr;
  return marks;
}

}  // namespace

/// Those that a thread has asked for lately: hashing takes longer than all the rest of a message.
class JournalForm::MessageIds {
 public:
  using Digits = std::array<char, kJournalMessageIdDigits>;

  const Digits& find(const JournalForm& form, unsigned id) {
    Place& place = places_[id % kPlaces];
    if (place.form != form.number_ || place.id != id) [[unlikely]] {
      write_journal_message_id(form.product_, id, place.digits.data());
      place.form = form.number_;
      place.id = id;
    }
    return place.digits;
  }

 private:
  static constexpr std::size_t kPlaces = 64;

  struct Place {
    unsigned long long form = 0;  // 0: none has been asked for
    unsigned id = 0;
    Digits digits = {};
  };
  std::array<Place, kPlaces> places_;
};

/// What a thread makes messages with; the memory is used again.
struct JournalForm::Rooms {
  static constexpr std::size_t kMostKept = 64U << 10;

  void limit() {
    for (std::string* text : {&rendered, &message}) {
      if (text->capacity() > kMostKept) std::string().swap(*text);
      text->clear();
    }
  }
  std::string rendered;
  std::string message;
  MessageIds ids;
};

JournalForm::JournalForm(std::string product) : product_(std::move(product)), number_(++latest_number) {}

void JournalForm::append_entry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                               std::string& out) {
  const _qz_LOG_log_entry_imp& implementation = EntryAccess::of(entry);
  const EntryMarks marks = marks_for(implementation);
  const unsigned id = implementation.get_entry_id();
  const unsigned level = implementation.get_log_level();
  append_entry_body(entry, use_default, selector_index, out);
  with_thread_instance<Rooms>([&](Rooms& rooms) {
    append_message(entry, marks, {use_default, selector_index}, rooms, out);
    append_number_field("PRIORITY", syslog_severity(level), out);
    if (!product_.empty()) {
      const MessageIds::Digits& digits = rooms.ids.find(*this, id);
      out.append("\nMESSAGE_ID=").append(digits.data(), digits.size());
    }
  });
  append_number_field("QZLOG_ID", id, out);
  if (marks.event_name != nullptr) append_text_field("QZLOG_NAME", marks.event_name->text(), out);
  append_number_field("QZLOG_LEVEL", level, out);
  append_attribute_fields(implementation, marks, out);
}

void JournalForm::append_message(const qz_LOG_LogEntry& entry, const EntryMarks& marks, const MessageChoice& choice,
                                 Rooms& rooms, std::string& out) {
  rooms.limit();
  if (!append_shown_message(entry, marks, choice, rooms.rendered, rooms.message)) {
    failures_.fetch_add(1, std::memory_order_relaxed);
    return append_text_field("MESSAGE", rooms.message, out);  // which is ours, and in no code page
  }
  JournalField field("MESSAGE", out);
  append_journal_text(rooms.message, out);
  field.end();
}

void JournalForm::append_told(ToldOf kind, const std::vector<LossTable::Row>& rows, std::string& out) const {
  append_told_body(kind, rows, out);
  unsigned level = 0;
  std::string message;
  for (const LossTable::Row& row : rows) {
    if (!message.empty()) message += "; ";
    message += told_message(kind, row);
    level = std::max(level, row.level);
  }
  append_text_field("MESSAGE", message, out);
  append_number_field("PRIORITY", syslog_severity(level), out);
  append_number_field("QZLOG_LEVEL", level, out);
  out += '\n';
}

}  // namespace qzlog
