#include "message/icu_template.h"

#include <atomic>
#include <cstdio>
#include <memory>

#include "foundation/allocate.h"
#include "foundation/text_buffer.h"
#include "message/code_page.h"
#include "message/icu_memory.h"
#include "message/logmsg.h"
#include "message/pattern_nesting.h"
#include "message/template_limits.h"

namespace qzlog {

namespace {

std::uint64_t next_serial() {
  static std::atomic<std::uint64_t> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::unique_ptr<_qz_LOG_msg_token_list> tokenize(const icu::UnicodeString& text) {
  const IcuMemory memory;
  memory.check(text);
  auto tokens = std::make_unique<_qz_LOG_msg_token_list>();
  _qz_LOG_log_message::_tokenize_string(text, *tokens);
  memory.check();
  return tokens;
}

}  // namespace

IcuTemplate::IcuTemplate(const icu::UnicodeString& text, const _qz_LOG_log_definition& definition)
    : IcuTemplate(tokenize(text), definition) {}

IcuTemplate::IcuTemplate(std::unique_ptr<const _qz_LOG_msg_token_list> tokens, const _qz_LOG_log_definition& definition)
    : serial_(next_serial()),
      pieces_(*tokens, TemplatePieces::Texts::kNone, definition),
      formattable_count_(_qz_LOG_log_message::_get_number_of_attributes(*tokens)) {
  const IcuMemory memory;
  build_pattern(*tokens);
  memory.check(pattern_);
  UErrorCode status = U_ZERO_ERROR;
  icu::MessagePattern parsed(status);
  is_within_limits_ = argument_count() <= kMostTemplateArguments && parse_pattern(pattern_, parsed, status);
  can_be_assembled_ = is_within_limits_ && U_SUCCESS(status) && split_pattern(parsed);
  memory.check(status);
  set_memory_bytes(measure());
}

std::size_t IcuTemplate::measure() const {
  return block_bytes(sizeof *this) + pieces_.memory_bytes() +
         block_bytes(static_cast<std::size_t>(pattern_.getCapacity()) * sizeof(char16_t)) +
         block_bytes(kinds_.capacity() * sizeof kinds_[0]) + block_bytes(parts_.capacity() * sizeof(Part)) +
         block_bytes(literals_.capacity());
}

void IcuTemplate::build_pattern(const _qz_LOG_msg_token_list& tokens) {
  for (const _qz_LOG_msg_token* token = tokens.get_head(); token != nullptr; token = token->get_next()) {
    if (token->get_type() == _QZ_STRING_TOKEN) {
      const icu::UnicodeString& text = static_cast<const _qz_LOG_string_token*>(token)->get_text();
      pattern_ += text;
      // A brace in the text may ask ICU for a time as well as a reference.
      shows_time_ = shows_time_ || text.indexOf(u'{') >= 0;
    } else if (token->get_type() == _QZ_FMT_SPECIFIER_TOKEN && argument_of(*token) != nullptr) {
      append_argument(message_format_kind(static_cast<const _qz_LOG_fmt_spec_token*>(token)->get_format()));
    }
  }
}

void IcuTemplate::append_argument(MessageFormatKind kind) {
  if (kind == MessageFormatKind::kUnknown) return;
  char number[16];
  std::snprintf(number, sizeof(number), "{%u", argument_count());
  kinds_.push_back(kind);
  pattern_ += icu::UnicodeString(number, -1, US_INV);
  pattern_ += icu::UnicodeString(argument_style(kind), -1, US_INV);
  pattern_ += u'}';
  shows_time_ = shows_time_ || qzlog::shows_time(kind);
}

/// Walks the pattern as MessageFormat does when it formats. False when there is a part that only it can write.
bool IcuTemplate::split_pattern(const icu::MessagePattern& parsed) {
  unsigned format_index = 0;
  int literal_begin = parsed.getPart(0).getLimit();
  for (int i = 1; i < parsed.countParts(); ++i) {
    const icu::MessagePattern::Part& part = parsed.getPart(i);
    if (!append_literal(literal_begin, part.getIndex())) return false;
    literal_begin = part.getLimit();
    if (part.getType() == UMSGPAT_PART_TYPE_MSG_LIMIT) return true;
    if (part.getType() != UMSGPAT_PART_TYPE_ARG_START) continue;
    if (!append_argument_part(parsed, i, format_index++)) return false;
    i = parsed.getLimitPartIndex(i);
    literal_begin = parsed.getPart(i).getLimit();
  }
  return false;
}

/// False when the text has half a surrogate pair, which what follows might complete.
bool IcuTemplate::append_literal(int begin, int end) {
  if (begin == end) return true;
  TextBuffer bytes;
  if (!append_utf8(pattern_.tempSubStringBetween(begin, end), bytes)) return false;
  parts_.push_back({Part::Kind::kLiteral, MessageFormatKind::kUnknown, 0, 0, static_cast<unsigned>(literals_.size()),
                    static_cast<unsigned>(bytes.size())});
  literals_.append(bytes.data(), bytes.size());
  return true;
}

bool IcuTemplate::append_argument_part(const icu::MessagePattern& parsed, int start, unsigned format_index) {
  const UMessagePatternArgType type = parsed.getPart(start).getArgType();
  const icu::MessagePattern::Part& name = parsed.getPart(start + 1);
  if (name.getType() != UMSGPAT_PART_TYPE_ARG_NUMBER) return false;
  const auto number = static_cast<unsigned>(name.getValue());
  if (number >= argument_count()) return false;
  const MessageFormatKind kind = kinds_[number];
  if (type == UMSGPAT_ARG_TYPE_NONE) {
    parts_.push_back({Part::Kind::kText, kind, number, 0, 0, 0});
    return kind == MessageFormatKind::kText;
  }
  if (type != UMSGPAT_ARG_TYPE_SIMPLE) return false;
  const int limit = parsed.getPart(parsed.getLimitPartIndex(start)).getIndex();
  const bool has_own_style =
      pattern_.tempSubStringBetween(name.getLimit(), limit) != icu::UnicodeString(argument_style(kind), -1, US_INV);
  Part::Kind part = kind == MessageFormatKind::kInteger ? Part::Kind::kInteger : Part::Kind::kStyled;
  if (has_own_style) part = Part::Kind::kFormatted;
  parts_.push_back({part, kind, number, format_index, 0, 0});
  (has_own_style ? has_formatted_parts_ : has_locale_parts_) = true;
  return true;
}

}  // namespace qzlog
