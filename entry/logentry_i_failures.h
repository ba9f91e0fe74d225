#ifndef QZLOG_ENTRY_LOGENTRY_I_FAILURES_H
#define QZLOG_ENTRY_LOGENTRY_I_FAILURES_H

#include "entry/logentry_i.h"
#include "foundation/itoa.h"
#include "util/debug_record.h"

/// What the sources of the entry implementation share beyond its class.

namespace qzlog {

/// They write their debug records under one name.
constexpr const char* kEntrySource = "logentry_i";

inline void reject_null_or_empty(const char* name) {
  if (name == nullptr || name[0] == '\0') throw QZX_logging_illegal_argument("invalid argument", 0);
}

}  // namespace qzlog

/// Throws `Exception` with the text, the entry's ID and " !".
template <typename Exception>
void _qz_LOG_log_entry_imp::throw_with_id(const char* text_before_id) const {
  // IDs from 2147483648 show as negative numbers in every text about them.
  char id_text[12];
  my_itoa(id_text, static_cast<int>(head_.entry_id));
  qz_String text(text_before_id);
  text += id_text;
  text += " !";
  throw Exception(text.c_str(), 0);
}

#endif  // QZLOG_ENTRY_LOGENTRY_I_FAILURES_H
