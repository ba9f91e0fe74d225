#include <cstring>

#include "entry/logentry_i_failures.h"
#include "entry/text_limits.h"
#include "foundation/line_breaks.h"
#include "foundation/text_room.h"
#include "message/code_page.h"
#include "message/text_cut.h"
#include "qzlog/logcfg.h"

using namespace qzlog;

namespace {

constexpr int kTruncationCapacity = 8095;

bool exceeds_character_limit(const char* value, std::size_t length, int limit) {
  if (qz_LOG_LogConfig::IsICUEnabled()) {
    return decoded_length_exceeds(value, length, qz_LOG_LogConfig::GetCodePage(), limit);
  }
  return length > static_cast<std::size_t>(limit);
}

bool changes_when_filtered(const char* text, std::size_t length, bool escape) {
  return escape ? contains_line_break(text, length) : std::memchr(text, '\\', length) != nullptr;
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
  TextRoom truncated(static_cast<std::size_t>(limit) * kMostBytesPerUnit + 1);
  truncated.data()[0] = '\0';
  truncate_mbstring(attribute.get_name(), value, limit, truncated.data(), truncated.size());
  add_filtered_text(attribute, truncated.data(), QZ_strlen(truncated.data()), escape);
}

void _qz_LOG_log_entry_imp::add_stored_text(const char* name, const char* text, std::size_t length, bool escape) {
  const _qz_LOG_attribute_entry* const attribute = proceed_to(name);
  if (attribute == nullptr) throw_invalid_name(name);
  const unsigned char type = attribute->get_type();
  const bool is_char = type >= TypeChar32 && type <= TypeChar2K;
  if (!is_char && !is_unicode_string_attribute(static_cast<qz_AttributeType>(type))) {
    throw_with_id<QZX_logging_attribute_type_mismatch>("Used the wrong add method under Entry ID ");
  }
  if (exceeds_limit_unescaped(type, text, length)) {
    return is_char ? add_truncated_text(*attribute, text, true) : add_truncated_mbtext(*attribute, text, true);
  }
  if (escape) return add_filtered_text(*attribute, text, length, true);
  store_text(*attribute, text, length);
}

bool _qz_LOG_log_entry_imp::exceeds_limit_unescaped(unsigned char type, const char* text, std::size_t length) {
  TextRoom plain(length + 1);
  unescape_line_breaks(text, plain.data(), static_cast<int>(length + 1));
  const std::size_t plain_length = QZ_strlen(plain.data());
  if (type <= TypeChar2K) return plain_length > static_cast<std::size_t>(text_limit(type));
  return exceeds_character_limit(plain.data(), plain_length, text_limit(type));
}

/// Stores a text of a Char or MBChar type after filtering it, if there is anything to filter.
void _qz_LOG_log_entry_imp::add_filtered_text(const _qz_LOG_attribute_entry& attribute, const char* value,
                                              std::size_t length, bool escape) {
  if (!changes_when_filtered(value, length, escape)) return store_text(attribute, value, length);
  // Room for every line break to take two characters.
  TextRoom filtered(length * 2 + 1);
  filter_string(value, filtered.data(), filtered.size(), escape);
  store_text(attribute, filtered.data(), QZ_strlen(filtered.data()));
}

template <unsigned char code>
void _qz_LOG_log_entry_imp::store_text_of(const KnownName* name, const char* text, unsigned length) {
  message_stale_ = true;
  if constexpr (code >= TypeMBChar32) {
    attributes_.put<code>(name, next_attribute_ - 1, _qz_LOG_ustring(text, length));
  } else {
    attributes_.put_text<code>(name, next_attribute_ - 1, text, length);
  }
}

void _qz_LOG_log_entry_imp::store_text(const _qz_LOG_attribute_entry& attribute, const char* text, std::size_t length) {
  using Store = void (_qz_LOG_log_entry_imp::*)(const KnownName*, const char*, unsigned);
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
    cut_to_units(value, qz_LOG_LogConfig::GetCodePage(), limit, buffer, capacity);
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
