#ifndef QZLOG_SINKS_JOURNAL_FIELDS_H
#define QZLOG_SINKS_JOURNAL_FIELDS_H

#include <string>
#include <string_view>

#include "entry/logentry_i.h"
#include "foundation/no_copies.h"
#include "lines/entry_marks.h"

namespace qzlog {

/// A field of a message to journald under way: a line feed, NAME=VALUE; or where the value has line feeds, a line feed,
/// NAME, a line feed, the value's length in eight bytes, the lowest first, and the value. The message ends with another
/// line feed. A value is what is appended to the text between the field's making and `end`.
class JournalField : public qz_UTIL_no_inadvertant_copies {
 public:
  JournalField(std::string_view name, std::string& out);
  /// Of an attribute, see append_journal_field_name().
  static JournalField of_attribute(std::string_view name, std::string& out);

  void end();

 private:
  struct Named {};
  JournalField(std::string& out, Named) : out_(out) { begin_value(); }
  void begin_value();

  std::string& out_;
  std::size_t value_ = 0;  // where it begins
};

/// Appends a text of UTF-8; what is none becomes replacement characters.
void append_utf8_text(std::string_view text, std::string& out);

/// Appends a text of the code page that entries have, as UTF-8; what stands for nothing becomes what ICU puts
/// in its place. Throws what reading texts in the code page throws.
void append_journal_text(std::string_view text, std::string& out);

/// Appends a field for each attribute that lines show. Numbers, moments and truth values are as in lines. Throws what
/// reading texts in the code page throws.
void append_attribute_fields(const _qz_LOG_log_entry_imp& entry, const EntryMarks& marks, std::string& out);

}  // namespace qzlog

#endif  // QZLOG_SINKS_JOURNAL_FIELDS_H
