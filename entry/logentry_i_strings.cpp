#include <algorithm>
#include <cstring>

#include "entry/logentry_i_failures.h"
#include "message/code_page.h"
#include "qzlog/logcfg.h"

namespace {

constexpr int kTruncationCapacity = 8095;
constexpr std::size_t kFilterCapacity = 8096;
// The most bytes that one UTF-16 unit takes in any code page, switching between character sets included.
constexpr int kMaxBytesPerUnit = 8;

/// The limit of a text type: bytes for Char types, characters for MBChar types.
int text_limit(unsigned char type) {
  static constexpr int kLimits[] = {32, 64, 128, 256, 1024, 2048};
  return kLimits[(type - TypeChar32) % 6];
}

/// Room for a text: on the stack, unless a code page with long sequences needs more.
class TextBuffer {
 public:
  explicit TextBuffer(std::size_t size) : size_(std::max(size, sizeof(stack_))) {
    if (size_ > sizeof(stack_)) heap_.reset(qz_new_array<char>(size_));
  }
  char* data() { return heap_ != nullptr ? heap_.get() : stack_; }
  int size() const { return static_cast<int>(size_); }

 private:
  std::size_t size_;
  std::unique_ptr<char[]> heap_;
  char stack_[kFilterCapacity];
};

bool exceeds_character_limit(const char* value, int limit) {
  if (qz_LOG_LogConfig::IsICUEnabled()) {
    return decoded_length_exceeds(value, qz_LOG_LogConfig::GetCodePage(), limit);
  }
  return QZ_strlen(value) > static_cast<std::size_t>(limit);
}

[[noreturn]] void throw_small_buffer() {
  throw QZX_logging_illegal_argument("The buf length is smaller than cut length!", 0);
}

void cut_to_bytes(const char* value, int limit, char* buffer, int capacity) {
  if (capacity < limit + 1) throw_small_buffer();
  QZ_strncpy(buffer, value, static_cast<std::size_t>(limit));
  buffer[limit] = '\0';
}

/// Cuts to UTF-16 units; a pair of them may be cut in two.
void cut_to_units(const char* value, int limit, char* buffer, int capacity) {
  const char* const code_page = qz_LOG_LogConfig::GetCodePage();
  int length = 0;
  const icu::UnicodeString cut(decode_text(value, code_page), 0, limit);
  if (!encode_text(cut, code_page, buffer, capacity, length) || length >= capacity) throw_small_buffer();
  buffer[length] = '\0';
}

/// The line break that a letter behind a backslash stands for, '\0' for any other letter.
char unescaped(char letter) { return letter == 'n' ? '\n' : letter == 'r' ? '\r' : '\0'; }

/// The letter that stands for a line break, '\0' for any other character.
char escape_letter(char character) { return character == '\n' ? 'n' : character == '\r' ? 'r' : '\0'; }

void escape_line_breaks(const char* source, char* target, int size) {
  int written = 0;
  for (int read = 0; source[read] != '\0' && read < size - 1 && written < size - 1; ++read) {
    const char letter = escape_letter(source[read]);
    target[written++] = letter != '\0' ? '\\' : source[read];
    if (letter != '\0' && written < size - 1) target[written++] = letter;
  }
  target[written] = '\0';
}

void unescape_line_breaks(const char* source, char* target, int size) {
  int written = 0;
  while (*source != '\0' && written < size - 1) {
    const char line_break = source[0] == '\\' ? unescaped(source[1]) : '\0';
    target[written++] = line_break != '\0' ? line_break : source[0];
    source += line_break != '\0' ? 2 : 1;
  }
  target[written] = '\0';
}

}  // namespace

void _qz_LOG_log_entry_imp::add_attrib_str(const char* name, const char* value, bool escape) {
  if (name == nullptr || name[0] == '\0' || value == nullptr) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::add_attrib_str, name or value equal NULL\n");
    throw QZX_logging_illegal_argument("invalid argument", 0);
  }
  const _qz_LOG_attribute_entry* const attribute = require_definition().get_attr_info_by_name(name);
  if (attribute == nullptr) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::add_attrib_str, can not find attribute :%s\n", name);
    throw_invalid_name(name);
  }
  const unsigned char type = attribute->get_type();
  if (type < TypeChar32 || type > TypeChar2K) {
    throw QZX_logging_attribute_type_mismatch("Used the wrong add method.", 0);
  }
  const auto limit = text_limit(type);
  char truncated[kTruncationCapacity + 1];
  truncated[0] = '\0';
  if (QZ_strlen(value) > static_cast<std::size_t>(limit)) {
    truncate_string(name, value, limit, truncated, kTruncationCapacity);
    value = truncated;
  }
  add_filtered_text(name, type, value, escape);
}

void _qz_LOG_log_entry_imp::add_attrib_mbstr(const char* name, const char* value, bool escape) {
  if (name == nullptr || name[0] == '\0' || value == nullptr) {
    throw QZX_logging_illegal_argument("invalid argument", 0);
  }
  const _qz_LOG_attribute_entry* const attribute = require_definition().get_attr_info_by_name(name);
  if (attribute == nullptr) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::add_attrib_mbstr, can not find attribute :%s\n",
                    name);
    throw_invalid_name(name);
  }
  const unsigned char type = attribute->get_type();
  if (!is_unicode_string_attribute(static_cast<qz_AttributeType>(type))) {
    throw_with_id<QZX_logging_attribute_type_mismatch>("Used the wrong add method under Entry ID ");
  }
  const int limit = text_limit(type);
  if (!exceeds_character_limit(value, limit)) return add_filtered_text(name, type, value, escape);
  TextBuffer truncated(static_cast<std::size_t>(limit) * kMaxBytesPerUnit + 1);
  truncated.data()[0] = '\0';
  truncate_mbstring(name, value, limit, truncated.data(), truncated.size());
  add_filtered_text(name, type, truncated.data(), escape);
}

/// Stores a text of a Char or MBChar type after filtering it.
void _qz_LOG_log_entry_imp::add_filtered_text(const char* name, unsigned char type, const char* value, bool escape) {
  // Room for every line break to take two characters.
  TextBuffer filtered(QZ_strlen(value) * 2 + 1);
  filter_string(value, filtered.data(), filtered.size(), escape);
  _add_attribute(name, _qz_LOG_new_text(type, filtered.data()));
}

/// What both cuts begin with. False when the setting, a word that anyone can write, says neither to refuse nor to cut.
bool _qz_LOG_log_entry_imp::wants_truncation(const char* name, const char* value, const char* buffer) const {
  if (name == nullptr || value == nullptr || buffer == nullptr) {
    throw QZX_logging_illegal_argument("arguement is null when trucate string!", 0);
  }
  const int action = qz_LOG_LogConfig::GetActionAttrLenExceed();
  if (action == QZ_ACTION_REFUSE) {
    qz_String text(name);
    text += " Attribute value is overflow under Entry ID ";
    throw_with_id<QZX_logging_invalid_attribute_value>(text.c_str());
  }
  return action == QZ_ACTION_TRUNCATE;
}

void _qz_LOG_log_entry_imp::truncate_string(const char* name, const char* value, int limit, char* buffer,
                                            int capacity) const {
  if (wants_truncation(name, value, buffer)) cut_to_bytes(value, limit, buffer, capacity);
}

void _qz_LOG_log_entry_imp::truncate_mbstring(const char* name, const char* value, int limit, char* buffer,
                                              int capacity) const {
  if (!wants_truncation(name, value, buffer)) return;
  if (qz_LOG_LogConfig::IsICUEnabled()) {
    cut_to_units(value, limit, buffer, capacity);
  } else {
    cut_to_bytes(value, limit, buffer, capacity);
  }
}

void _qz_LOG_log_entry_imp::filter_string(const char* source, char* target, int size, bool escape) {
  if (escape) {
    escape_line_breaks(source, target, size);
  } else {
    unescape_line_breaks(source, target, size);
  }
}
