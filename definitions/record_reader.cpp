#include "definitions/record_reader.h"

#include <cstring>
#include <memory>
#include <new>

#include "definitions/definition_format.h"
#include "qzlog/qz_exception.h"
#include "util/debug_record.h"

namespace qzlog {

namespace {

constexpr const char* kSource = "def_read";
// Strings up to this size, nearly all, are read without taking memory for them.
constexpr unsigned kStackStringSize = 1024;

bool report_no_buffer() {
  QZ_DEBUG_RECORD(1, kSource, "%s:%d new p_buffer\n");
  return false;
}

bool read_into(RecordBytes& bytes, char* buffer, unsigned size_bytes, qz_String& text) {
  if (!bytes.read(buffer, size_bytes)) return false;
  try {
    text._assign(buffer, static_cast<unsigned>(strnlen(buffer, size_bytes)));
  } catch (const QZX_memory_alloc&) {
    return report_no_buffer();
  }
  return true;
}

}  // namespace

bool read_word(RecordBytes& bytes, unsigned& word) noexcept {
  unsigned char digits[4];
  if (!bytes.read(digits, sizeof digits)) return false;
  word = unsigned{digits[0]} << 24 | unsigned{digits[1]} << 16 | unsigned{digits[2]} << 8 | digits[3];
  return true;
}

bool read_string(RecordBytes& bytes, qz_String& text) {
  unsigned length = 0;
  if (!read_word(bytes, length)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_int4\n");
    return false;
  }
  if (length == 0) {
    text._assign(nullptr, 0);
    return true;
  }
  if (length <= kStackStringSize) {
    char buffer[kStackStringSize];
    return read_into(bytes, buffer, length, text);
  }
  if (!bytes.has_left(length)) return false;
  const std::unique_ptr<char[]> buffer(new (std::nothrow) char[length]);
  return buffer == nullptr ? report_no_buffer() : read_into(bytes, buffer.get(), length, text);
}

bool read_attribute(RecordBytes& bytes, qz_String& name, qz_AttributeType& type, qz_String& redirection_name) {
  unsigned code = 0;
  if (!read_string(bytes, name) || !read_word(bytes, code)) return false;
  type = static_cast<qz_AttributeType>(code & ldf::kTypeCodeMask);
  return read_string(bytes, redirection_name);
}

bool read_entry_info(RecordBytes& bytes, unsigned& entry_id, unsigned& entry_word, unsigned& property_mask,
                     qz_String& default_msg_id, qz_String& default_msg_text, qz_String& selector_attribute_name) {
  return read_word(bytes, entry_id) && read_word(bytes, entry_word) && read_word(bytes, property_mask) &&
         read_string(bytes, default_msg_id) && read_string(bytes, default_msg_text) &&
         read_string(bytes, selector_attribute_name);
}

bool read_selector_msg(RecordBytes& bytes, unsigned& index, unsigned& value, qz_String& message_id,
                       qz_String& message_text) {
  if (!read_word(bytes, index)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_int4 selector_msg_index error\n");
    return false;
  }
  if (!read_word(bytes, value)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_int4 selector_value error\n");
    return false;
  }
  if (!read_string(bytes, message_id)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_string selector_msg_id error\n");
    return false;
  }
  if (!read_string(bytes, message_text)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_string selector_msg_text error\n");
    return false;
  }
  return true;
}

}  // namespace qzlog
