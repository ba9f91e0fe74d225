#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <utility>

#include "entry/logentry_i_failures.h"
#include "foundation/text_buffer.h"
#include "message/code_page.h"
#include "message/icu_message.h"
#include "message/logmsg.h"
#include "qzlog/logcfg.h"

using namespace qzlog;

namespace {

constexpr const char* kNotSupportedText = "qz_LOG_LogEntry::GetMessage:  this method is not yet supported.";
constexpr long kScratchSize = 65536;

/// Whether readable messages are switched off for the life of the process, asked once.
bool is_disabled() {
  enum Answer : int { kNotAsked, kNo, kYes };
  static constinit std::atomic<Answer> bIsDisable{kNotAsked};
  Answer answer = bIsDisable.load(std::memory_order_relaxed);
  if (answer == kNotAsked) [[unlikely]] {
    const Answer fresh = QZ_getenv("_QZ_DISABLE_READABLE_MSG") != nullptr ? kYes : kNo;
    // The first answer stays.
    if (bIsDisable.compare_exchange_strong(answer, fresh, std::memory_order_relaxed)) answer = fresh;
  }
  return answer == kYes;
}

// Made for the code page of the first message rendered, and kept: a later change of the code page does not matter to
// it.
constinit SharedConverter pConverter;

void make_message_converter() {
  const char* const code_page = qz_LOG_LogConfig::GetCodePage();
  const bool is_named = code_page[0] != '\0';
  if (pConverter.make_once(code_page, is_named)) return;
  if (is_named) {
    QZ_DEBUG_RECORD_AT(
        1, kEntrySource, 2086,
        "%s:%d _qz_LOG_log_entry_imp::get_readable_message, UnicodeConverter construct error, codepage=%s\n",
        code_page);
    throw QZX_logging_internal_error("_qz_LOG_log_message::get_readable_message:  UnicodeConverter constructor failed!",
                                     0);
  }
  QZ_DEBUG_RECORD_AT(
      1, kEntrySource, 2100,
      "%s:%d _qz_LOG_log_entry_imp::get_readable_message, UnicodeConverter construct error, codepage=%s\n", code_page);
  throw QZX_logging_internal_error(
      "_qz_LOG_log_message::get_readable_message:  Default UnicodeConverter constructor failed!", 0);
}

[[noreturn]] void throw_conversion_failure() {
  QZ_DEBUG_RECORD_AT(1, kEntrySource, 2122,
                     "%s:%d _qz_LOG_log_entry_imp::get_readable_message, fromUnicodeString error\n");
  // The text names another function than the one that failed; log readers know it in this form.
  throw QZX_logging_internal_error("_qz_LOG_log_message::get_readable_message:  MessageFormat::format() failed!", 0);
}

/// With the converter of the first message. A message that is in UTF-8 already is only copied.
bool encode_for_buffer(IcuMessage& message, char* buffer, int capacity, int& length) {
  if (!message.is_utf8() || !pConverter.is_utf8()) {
    return pConverter.encode(message.to_unicode(), buffer, capacity, length);
  }
  const TextBuffer& text = message.utf8();
  if (text.size() > static_cast<std::size_t>(capacity)) return false;
  std::memcpy(buffer, text.data(), text.size());
  length = static_cast<int>(text.size());
  return true;
}

}  // namespace

const char* _qz_LOG_log_entry_imp::get_readable_message(char* buffer, long size, bool use_default,
                                                        unsigned int selector_index) const {
  if (is_disabled()) return kNotSupportedText;
  if (!message_stale_ && use_default == last_use_default_ && selector_index == last_selector_index_) {
    return message_cache_.text();
  }
  if (size <= 0) return buffer;
  if (!qz_LOG_LogConfig::IsICUEnabled()) {
    TextBuffer message;
    _qz_LOG_log_message::append_narrow_message(*this, get_definition(), use_default, selector_index, message);
    message.copy_padded(buffer, static_cast<std::size_t>(size));
    return buffer;
  }
  IcuMessage message;
  _qz_LOG_log_message::format_message(*this, get_definition(), use_default, selector_index, message);
  make_message_converter();
  const int capacity = static_cast<int>(std::min<long>(size, INT32_MAX));
  int length = 0;
  if (!encode_for_buffer(message, buffer, capacity, length)) throw_conversion_failure();
  // The terminator comes on top of `size`.
  buffer[length] = '\0';
  return buffer;
}

const char* _qz_LOG_log_entry_imp::get_readable_message(bool use_default, unsigned int selector_index) const {
  char scratch[kScratchSize + 1];
  scratch[0] = '\0';
  // The cache takes the text before it is rendered, so this form returns the empty text: callers rely on it.
  message_cache_ = _qz_LOG_ustring(scratch);
  get_readable_message(scratch, kScratchSize, use_default, selector_index);
  message_stale_ = false;
  last_use_default_ = use_default;
  last_selector_index_ = selector_index;
  return message_cache_.text();
}

void _qz_LOG_log_entry_imp::format_message(std::string& text, bool use_default, unsigned int selector_index) const try {
  if (is_disabled()) {
    text = kNotSupportedText;
    return;
  }
  if (!qz_LOG_LogConfig::IsICUEnabled()) {
    TextBuffer message;
    _qz_LOG_log_message::append_narrow_message(*this, get_definition(), use_default, selector_index, message);
    text.assign(message.data(), message.size());
    return;
  }
  IcuMessage message;
  _qz_LOG_log_message::format_message(*this, get_definition(), use_default, selector_index, message);
  const char* const code_page = qz_LOG_LogConfig::GetCodePage();
  if (message.is_utf8() && is_utf8(code_page)) {
    text.assign(message.utf8().data(), message.utf8().size());
    return;
  }
  std::string encoded;
  if (!encode_text(message.to_unicode(), code_page, encoded)) throw_conversion_failure();
  text = std::move(encoded);
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

std::string _qz_LOG_log_entry_imp::format_message(bool use_default, unsigned int selector_index) const {
  std::string text;
  format_message(text, use_default, selector_index);
  return text;
}
