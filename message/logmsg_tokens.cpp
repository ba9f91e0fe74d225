#include "message/logmsg_tokens.h"

#include <memory>

#include "foundation/allocate.h"
#include "message/code_page.h"
#include "message/logmsg.h"

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

/// Where a tokenizer stands within a template.
enum class State { kText, kAfterFormat, kInName };

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

}  // namespace

void _qz_LOG_log_message::_tokenize_string(const icu::UnicodeString& text, _qz_LOG_msg_token_list& list) {
  list.clear();
  make_name_converter();
  const int length = text.length();
  int start = 0;
  int position = 0;
  State state = State::kText;
  while (position < length) {
    const int percent = text.indexOf(kPercent, position);
    if (percent < 0) break;
    // The unit behind the last one reads as 0xFFFF.
    const UChar next = text.charAt(percent + 1);
    if (next == kPercent) {
      // The pending text before the escape is dropped: stored templates rely on it.
      append_token<_qz_LOG_string_token>(list, icu::UnicodeString(kPercent));
      start = position = percent + 2;
      continue;
    }
    position = percent + 1;
    switch (state) {
      case State::kText:
        append_text(list, text, start, percent);
        append_token<_qz_LOG_fmt_spec_token>(list, static_cast<char>(next & 0xFF));
        state = State::kAfterFormat;
        break;
      case State::kAfterFormat:
        state = State::kInName;
        start = position;
        break;
      case State::kInName:
        state = State::kText;
        if (percent != start) {
          append_token<_qz_LOG_arg_spec_token>(list, convert_name(icu::UnicodeString(text, start, percent - start)));
        }
        start = position;
        break;
    }
  }
  // Up to where the last search began: text behind the last percent sign is not part of the message.
  append_text(list, text, start, position);
}

void _qz_LOG_log_message::_tokenize_qzString(const qz_String& text, _qz_LOG_msg_token_list& list) {
  list.clear();
  const unsigned length = text.length();
  unsigned start = 0;
  unsigned position = 0;
  State state = State::kText;
  while (position < length) {
    const unsigned percent = position++;
    if (text[percent] != '%') continue;
    if (position != length && text[position] == '%') {
      // An escape becomes as many zero bytes as the character's code, so nothing shows for it, and drops the pending
      // text.
      append_token<_qz_LOG_qzString_token>(list, qz_String(static_cast<unsigned>('%'), '\0'));
      start = ++position;
      continue;
    }
    switch (state) {
      case State::kText:
        append_text(list, text, start, percent);
        append_token<_qz_LOG_fmt_spec_token>(list, text[position]);
        state = State::kAfterFormat;
        break;
      case State::kAfterFormat:
        state = State::kInName;
        start = position;
        break;
      case State::kInName:
        state = State::kText;
        if (percent != start) append_token<_qz_LOG_arg_spec_token>(list, copy_terminated(text, start, percent));
        start = position;
        break;
    }
  }
  append_text(list, text, start, length);
}

unsigned int _qz_LOG_log_message::_get_number_of_attributes(const _qz_LOG_msg_token_list& list) {
  unsigned count = 0;
  for (const _qz_LOG_msg_token* token = list.get_head(); token != nullptr; token = token->get_next()) {
    if (token->get_type() == _QZ_FMT_SPECIFIER_TOKEN) ++count;
  }
  return count;
}
