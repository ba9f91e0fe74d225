#ifndef QZLOG_MESSAGE_ICU_TEMPLATE_H
#define QZLOG_MESSAGE_ICU_TEMPLATE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <unicode/messagepattern.h>
#include <unicode/unistr.h>

#include "definitions/prepared_message.h"
#include "message/template_pieces.h"

namespace qzlog {

/// Whether a format shows the date or the time, which depend on the time zone.
constexpr bool shows_time(MessageFormatKind kind) {
  return kind == MessageFormatKind::kDate || kind == MessageFormatKind::kTime;
}

/// A template of the ICU path made ready to render: the references to read, the ICU pattern that follows, and, where
/// the pattern is plain enough, the parts that a message is assembled from without MessageFormat. Never changes; any
/// thread.
class IcuTemplate : public PreparedMessage {
 public:
  /// A part of a message: literal text, an argument's text, an argument as an integer (IntegerStyle), an argument in
  /// the style that its format stands for, or one in a style of the text's own, which the whole pattern's formatter
  /// writes.
  struct Part {
    enum class Kind : unsigned char { kLiteral, kText, kInteger, kStyled, kFormatted };
    Kind kind;
    MessageFormatKind format;  // of an argument
    unsigned argument;         // its number
    unsigned format_index;     // kFormatted: which of the pattern's top-level arguments it is
    unsigned begin;            // kLiteral: in literals()
    unsigned length;
  };

  IcuTemplate(const icu::UnicodeString& text, const _qz_LOG_log_definition& definition);

  void prefetch_parts() const override {
    pieces_.prefetch_parts();
    prefetch(parts_.data(), parts_.size() * sizeof(Part));
    prefetch(literals_.data(), literals_.size());
  }
  /// Never the same for two templates of a process.
  std::uint64_t serial() const { return serial_; }
  const TemplatePieces& pieces() const { return pieces_; }
  const icu::UnicodeString& pattern() const { return pattern_; }
  /// False for what ICU would refuse, or could not parse within the stack.
  bool is_within_limits() const { return is_within_limits_; }
  /// The references that are rendered, and the format tokens, whose number ICU is given: the others' values are unset.
  unsigned argument_count() const { return static_cast<unsigned>(kinds_.size()); }
  unsigned formattable_count() const { return formattable_count_; }
  /// Whether the message may depend on the time zone.
  bool shows_time() const { return shows_time_; }

  /// Empty and false when MessageFormat has to render the whole pattern.
  bool can_be_assembled() const { return can_be_assembled_; }
  const std::vector<Part>& parts() const { return parts_; }
  /// Of kFormatted; of kInteger and kStyled.
  bool has_formatted_parts() const { return has_formatted_parts_; }
  bool has_locale_parts() const { return has_locale_parts_; }
  /// UTF-8.
  const std::string& literals() const { return literals_; }

 private:
  IcuTemplate(std::unique_ptr<const _qz_LOG_msg_token_list> tokens, const _qz_LOG_log_definition& definition);
  std::size_t measure() const;
  void build_pattern(const _qz_LOG_msg_token_list& tokens);
  void append_argument(MessageFormatKind kind);
  bool split_pattern(const icu::MessagePattern& parsed);
  bool append_literal(int begin, int end);
  bool append_argument_part(const icu::MessagePattern& parsed, int start, unsigned format_index);

  std::uint64_t serial_;
  TemplatePieces pieces_;
  icu::UnicodeString pattern_;
  std::vector<MessageFormatKind> kinds_;
  unsigned formattable_count_;
  bool shows_time_ = false;
  bool is_within_limits_ = false;
  bool can_be_assembled_ = false;
  bool has_formatted_parts_ = false;
  bool has_locale_parts_ = false;
  std::vector<Part> parts_;
  std::string literals_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_ICU_TEMPLATE_H
