#ifndef QZLOG_MESSAGE_ICU_ARGUMENTS_H
#define QZLOG_MESSAGE_ICU_ARGUMENTS_H

#include <cstddef>

#include <unicode/fmtable.h>
#include <unicode/utypes.h>

#include "entry/logentry_i.h"
#include "message/template_limits.h"
#include "message/template_pieces.h"

namespace qzlog {

/// The value that an entry has for one argument of an ICU pattern. A text stays where the entry has it, in the
/// configured code page.
struct IcuArgument {
  enum class Type : unsigned char { kText, kInteger, kFloat, kTime };

  Type type;
  const char* text;
  std::size_t length;
  int integer;
  double number;  // kFloat; kTime: milliseconds
};

/// Makes of an argument what ICU's formatters take.
void fill_argument(const IcuArgument& argument, icu::Formattable& target);

/// Reads the arguments of a template from an entry, in the order of the template.
class IcuArguments {
 public:
  explicit IcuArguments(const _qz_LOG_log_entry_imp& entry) : entry_(entry) {}

  void text(const TemplatePiece& /*piece*/) {}  // part of the pattern already
  void reference(const MessageReference& reference) {
    const IcuArgument argument = read(reference);
    if (count_ < kMostTemplateArguments) arguments_[count_++] = argument;
  }

  unsigned count() const { return count_; }
  const IcuArgument& operator[](unsigned i) const { return arguments_[i]; }

 private:
  IcuArgument read(const MessageReference& reference) const;
  IcuArgument read_text(const MessageReference& reference) const;
  IcuArgument read_integer(const MessageReference& reference) const;

  const _qz_LOG_log_entry_imp& entry_;
  unsigned count_ = 0;
  IcuArgument arguments_[kMostTemplateArguments];
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_ICU_ARGUMENTS_H
