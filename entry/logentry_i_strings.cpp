#include <algorithm>
#include <cstdint>
#include <cstring>

#include "entry/logentry_i_failures.h"
#include "message/code_page.h"
#include "message/icu_memory.h"
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

bool exceeds_character_limit(const char* value, std::size_t length, int limit) {
  if (qz_LOG_LogConfig::IsICUEnabled()) {
    return decoded_length_exceeds(value, length, qz_LOG_LogConfig::GetCodePage(), limit);
  }
  return length > static_cast<std::size_t>(limit);
}

/// Not zero when one of eight bytes is below `limit`, which is at most 128.
constexpr std::uint64_t find_byte_below(std::uint64_t bytes, unsigned char limit) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  return (bytes - kOnes * limit) & ~bytes & kOnes << 7;
}

std::uint64_t eight_bytes_at(const char* text) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, text, sizeof(bytes));
  return bytes;
}

bool is_line_break(char character) { return character == '\n' || character == '\r'; }

/// Most texts have no control character at all, and are too short for a search routine to pay.
bool contains_line_break(const char* text, std::size_t length) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (length >= kWord) {
    std::uint64_t found = find_byte_below(eight_bytes_at(text + length - kWord), ' ');
    for (std::size_t i = 0; i + kWord < length; i += kWord) found |= find_byte_below(eight_bytes_at(text + i), ' ');
    if (found == 0) return false;
  }
  return std::any_of(text, text + length, is_line_break);
}

bool changes_when_filtered(const char* text, std::size_t length, bool escape) {
  return escape ? contains_line_break(text, length) : std::memchr(text, '\\', length) != nullptr;
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
  const IcuMemory memory;
  const icu::UnicodeString cut(decode_text(value, code_page), 0, limit);
  memory.check(cut);
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
  const _qz_LOG_attribute_entry* const attribute = proceed_to(name);
  if (attribute == nullptr) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::add_attrib_str, can not find attribute :%s\n", name);
    throw_invalid_name(name);
  }
  const unsigned char type = attribute->get_type();
  if (type < TypeChar32 || type > TypeChar2K) {
    throw QZX_logging_attribute_type_mismatch("Used the wrong add method.", 0);
  }
  const std::size_t length = QZ_strlen(value);
  if (length > static_cast<std::size_t>(text_limit(type))) return add_truncated_text(*attribute, value, escape);
  add_filtered_text(*attribute, value, length, escape);
}

void _qz_LOG_log_entry_imp::add_truncated_text(const _qz_LOG_attribute_entry& attribute, const char* value,
                                               bool escape) {
  char truncated[kTruncationCapacity + 1];
  truncated[0] = '\0';
  truncate_string(attribute.get_name(), value, text_limit(attribute.get_type()), truncated, kTruncationCapacity);
  add_filtered_text(attribute, truncated, QZ_strlen(truncated), escape);
}

void _qz_LOG_log_entry_imp::add_attrib_mbstr(const char* name, const char* value, bool escape) {
  if (name == nullptr || name[0] == '\0' || value == nullptr) {
    throw QZX_logging_illegal_argument("invalid argument", 0);
  }
  const _qz_LOG_attribute_entry* const attribute = proceed_to(name);
  if (attribute == nullptr) {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::add_attrib_mbstr, can not find attribute :%s\n",
                    name);
    throw_invalid_name(name);
  }
  const unsigned char type = attribute->get_type();
  if (!is_unicode_string_attribute(static_cast<qz_AttributeType>(type))) {
    throw_with_id<QZX_logging_attribute_type_mismatch>("Used the wrong add method under Entry ID ");
  }
  const std::size_t length = QZ_strlen(value);
  if (exceeds_character_limit(value, length, text_limit(type))) {
    return add_truncated_mbtext(*attribute, value, escape);
  }
  add_filtered_text(*attribute, value, length, escape);
}

void _qz_LOG_log_entry_imp::add_truncated_mbtext(const _qz_LOG_attribute_entry& attribute, const char* value,
                                                 bool escape) {
  const int limit = text_limit(attribute.get_type());
  TextBuffer truncated(static_cast<std::size_t>(limit) * kMaxBytesPerUnit + 1);
  truncated.data()[0] = '\0';
  truncate_mbstring(attribute.get_name(), value, limit, truncated.data(), truncated.size());
  add_filtered_text(attribute, truncated.data(), QZ_strlen(truncated.data()), escape);
}

/// Stores a text of a Char or MBChar type after filtering it, if there is anything to filter.
void _qz_LOG_log_entry_imp::add_filtered_text(const _qz_LOG_attribute_entry& attribute, const char* value,
                                              std::size_t length, bool escape) {
  if (!changes_when_filtered(value, length, escape)) return store_text(attribute, value, length);
  // Room for every line break to take two characters.
  TextBuffer filtered(length * 2 + 1);
  filter_string(value, filtered.data(), filtered.size(), escape);
  store_text(attribute, filtered.data(), QZ_strlen(filtered.data()));
}

template <unsigned char code>
void _qz_LOG_log_entry_imp::store_text_of(const _qz_LOG_known_name* name, const char* text, unsigned length) {
  message_stale_ = true;
  if constexpr (code >= TypeMBChar32) {
    attributes_.put<code>(name, next_attribute_ - 1, _qz_LOG_ustring(text, length));
  } else {
    attributes_.put_text<code>(name, next_attribute_ - 1, text, length);
  }
}

void _qz_LOG_log_entry_imp::store_text(const _qz_LOG_attribute_entry& attribute, const char* text, std::size_t length) {
  using Store = void (_qz_LOG_log_entry_imp::*)(const _qz_LOG_known_name*, const char*, unsigned);
  // In the order of the type codes.
  static constexpr Store kStores[] = {
      &_qz_LOG_log_entry_imp::store_text_of<TypeChar32>,    &_qz_LOG_log_entry_imp::store_text_of<TypeChar64>,
      &_qz_LOG_log_entry_imp::store_text_of<TypeChar128>,   &_qz_LOG_log_entry_imp::store_text_of<TypeChar256>,
      &_qz_LOG_log_entry_imp::store_text_of<TypeChar1K>,    &_qz_LOG_log_entry_imp::store_text_of<TypeChar2K>,
      &_qz_LOG_log_entry_imp::store_text_of<TypeMBChar32>,  &_qz_LOG_log_entry_imp::store_text_of<TypeMBChar64>,
      &_qz_LOG_log_entry_imp::store_text_of<TypeMBChar128>, &_qz_LOG_log_entry_imp::store_text_of<TypeMBChar256>,
      &_qz_LOG_log_entry_imp::store_text_of<TypeMBChar1K>,  &_qz_LOG_log_entry_imp::store_text_of<TypeMBChar2K>};
  (this->*kStores[attribute.get_type() - TypeChar32])(attribute.get_known_name(), text, static_cast<unsigned>(length));
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
