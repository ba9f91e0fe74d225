#include <algorithm>
#include <cstring>
#include <new>

#include "entry/logentry_i_failures.h"
#include "message/code_page.h"
#include "message/logmsg.h"
#include "qzlog/logcfg.h"

namespace {

constexpr const char* kNotSupportedText = "qz_LOG_LogEntry::GetMessage:  this method is not yet supported.";
constexpr long kScratchSize = 65536;

/// Whether readable messages are switched off for the life of the process, asked once.
bool is_disabled() {
  static const char* const bIsDisable = QZ_getenv("_QZ_DISABLE_READABLE_MSG");
  return bIsDisable != nullptr;
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

/// The message in a code page, whatever its length.
std::string encode_message(const icu::UnicodeString& message, const char* code_page) {
  // Room for most texts in most code pages; for the others the length that they need is known after the first try.
  std::string text(static_cast<std::size_t>(message.length()) * 3 + 1, '\0');
  int length = 0;
  if (!encode_text(message, code_page, text.data(), static_cast<int>(text.size()), length)) {
    if (length <= static_cast<int>(text.size())) throw_conversion_failure();
    text.resize(static_cast<std::size_t>(length));
    if (!encode_text(message, code_page, text.data(), length, length)) throw_conversion_failure();
  }
  text.resize(static_cast<std::size_t>(length));
  return text;
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
    const qz_String message =
        _qz_LOG_log_message::get_qzString_message(*this, definition_.get(), use_default, selector_index);
    QZ_strncpy(buffer, message.c_str(), static_cast<std::size_t>(size - 1));
    buffer[size - 1] = '\0';
    return buffer;
  }
  const icu::UnicodeString message =
      _qz_LOG_log_message::get_message(*this, definition_.get(), use_default, selector_index);
  make_message_converter();
  int length = 0;
  const int capacity = static_cast<int>(std::min<long>(size, INT32_MAX));
  if (!pConverter.encode(message, buffer, capacity, length)) throw_conversion_failure();
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

std::string _qz_LOG_log_entry_imp::format_message(bool use_default, unsigned int selector_index) const try {
  if (is_disabled()) return kNotSupportedText;
  if (!qz_LOG_LogConfig::IsICUEnabled()) {
    const qz_String message =
        _qz_LOG_log_message::get_qzString_message(*this, definition_.get(), use_default, selector_index);
    return std::string(message.c_str(), message.length());
  }
  return encode_message(_qz_LOG_log_message::get_message(*this, definition_.get(), use_default, selector_index),
                        qz_LOG_LogConfig::GetCodePage());
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}
