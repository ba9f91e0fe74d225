#include "message/logmsg_tokens.h"

#include <memory>
#include <optional>

#include "foundation/allocate.h"
#include "message/code_page.h"
#include "message/logmsg.h"
#include "message/template_walk.h"

using namespace qzlog;

// One after the other rather than each its successor: a template may have more tokens than the stack has room.
_qz_LOG_msg_token::~_qz_LOG_msg_token() {
  while (next_ != nullptr) {
    const std::unique_ptr<_qz_LOG_msg_token> following(next_);
    next_ = following->next_;
    following->next_ = nullptr;
  }
}

void _qz_LOG_msg_token_list::add_to_tail(_qz_LOG_msg_token* token) {
  (head_ == nullptr ? head_ : tail_->next_) = token;
  tail_ = token;
}

void _qz_LOG_msg_token_list::clear() {
  delete head_;
  head_ = nullptr;
  tail_ = nullptr;
}

namespace {

constexpr UChar kPercent = u'%';

template <typename Token, typename... Arguments>
void append_token(_qz_LOG_msg_token_list& list, const Arguments&... arguments) {
  list.add_to_tail(new_object<Token>(arguments...));
}

void append_text(_qz_LOG_msg_token_list& list, const icu::UnicodeString& text, int begin, int end) {
  if (begin != end) append_token<_qz_LOG_string_token>(list, icu::UnicodeString(text, begin, end - begin));
}

/// The bytes up to a zero byte: the text is copied as a terminated one.
qz_String copy_terminated(const qz_String& text, unsigned begin, unsigned end) {
  qz_String copy;
  copy._assign(text.c_str() + begin, end - begin);
  return qz_String(copy.c_str());
}

void append_text(_qz_LOG_msg_token_list& list, const qz_String& text, unsigned begin, unsigned end) {
  if (begin != end) append_token<_qz_LOG_qzString_token>(list, copy_terminated(text, begin, end));
}

constinit SharedConverter pUConv;

void make_name_converter() {
  if (pUConv.make_once("UTF8", true)) return;
  throw QZX_logging_internal_error(
      "<QZX_logging_internal_error> _qz_LOG_log_message::_tokenize_string:  UnicodeConverter constructor failed!", 0);
}

/// The name in UTF-8. It has two bytes for each unit and two more: a longer one fails.
qz_String convert_name(const icu::UnicodeString& name) {
  const int capacity = 2 * (name.length() + 1);
  const std::unique_ptr<char[]> buffer(new_array<char>(static_cast<std::size_t>(capacity) + 1));
  int length = 0;
  if (!pUConv.encode(name, buffer.get(), capacity, length)) {
    throw QZX_logging_internal_error(
        "<QZX_logging_internal_error>_qz_LOG_log_message::_tokenize_string:  "
        "UnicodeConverter::fromUnicodeString() failed!",
        0);
  }
  buffer[static_cast<std::size_t>(length)] = '\0';
  return qz_String(buffer.get());
}

/// Tells of a template of the ICU path, and makes tokens of its parts.
class IcuTokenizer {
 public:
  IcuTokenizer(const icu::UnicodeString& text, _qz_LOG_msg_token_list& list) : text_(text), list_(list) {}

  std::optional<int> find_percent(int from) const {
    const int percent = text_.indexOf(kPercent, from);
    return percent < 0 ? std::nullopt : std::optional<int>(percent);
  }
  bool is_percent(int at) const { return text_.charAt(at) == kPercent; }
  void take_text(int begin, int end) { append_text(list_, text_, begin, end); }
  void take_escape(int /*percent*/) { append_token<_qz_LOG_string_token>(list_, icu::UnicodeString(kPercent)); }
  /// The unit behind the last one reads as 0xFFFF.
  void take_format(int percent) {
    append_token<_qz_LOG_fmt_spec_token>(list_, static_cast<char>(text_.charAt(percent + 1) & 0xFF));
  }
  void take_name(int begin, int end) {
    append_token<_qz_LOG_arg_spec_token>(list_, convert_name(icu::UnicodeString(text_, begin, end - begin)));
  }

 private:
  const icu::UnicodeString& text_;
  _qz_LOG_msg_token_list& list_;
};

/// The same of the narrow path.
class NarrowTokenizer {
 public:
  NarrowTokenizer(const qz_String& text, _qz_LOG_msg_token_list& list) : text_(text), list_(list) {}

  std::optional<unsigned> find_percent(unsigned from) const {
    const unsigned length = text_.length();
    while (from < length && text_[from] != '%') ++from;
    return from < length ? std::optional<unsigned>(from) : std::nullopt;
  }
  bool is_percent(unsigned at) const { return at != text_.length() && text_[at] == '%'; }
  void take_text(unsigned begin, unsigned end) { append_text(list_, text_, begin, end); }
  /// As many zero bytes as the character's code, so nothing shows for it.
  void take_escape(unsigned /*percent*/) {
    append_token<_qz_LOG_qzString_token>(list_, qz_String(static_cast<unsigned>('%'), '\0'));
  }
  void take_format(unsigned percent) { append_token<_qz_LOG_fmt_spec_token>(list_, text_[percent + 1]); }
  void take_name(unsigned begin, unsigned end) {
    append_token<_qz_LOG_arg_spec_token>(list_, copy_terminated(text_, begin, end));
  }

 private:
  const qz_String& text_;
  _qz_LOG_msg_token_list& list_;
};

}  // namespace

void _qz_LOG_log_message::_tokenize_string(const icu::UnicodeString& text, _qz_LOG_msg_token_list& list) {
  list.clear();
  make_name_converter();
  IcuTokenizer tokenizer(text, list);
  const TemplateEnd<int> end = walk_template<int>(tokenizer);
  // Text behind the last percent sign is not part of the message.
  append_text(list, text, end.start, end.position);
}

void _qz_LOG_log_message::_tokenize_qzString(const qz_String& text, _qz_LOG_msg_token_list& list) {
  list.clear();
  NarrowTokenizer tokenizer(text, list);
  append_text(list, text, walk_template<unsigned>(tokenizer).start, text.length());
}

unsigned int _qz_LOG_log_message::_get_number_of_attributes(const _qz_LOG_msg_token_list& list) {
  unsigned count = 0;
  for (const _qz_LOG_msg_token* token = list.get_head(); token != nullptr; token = token->get_next()) {
    if (token->get_type() == _QZ_FMT_SPECIFIER_TOKEN) ++count;
  }
  return count;
}
