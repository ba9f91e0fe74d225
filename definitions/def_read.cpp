#include "definitions/def_read.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "definitions/definition_format.h"
#include "foundation/qz_libc.h"
#include "qzlog/file_io.h"
#include "qzlog/qz_exception.h"
#include "util/debug_record.h"

namespace {

constexpr const char* kSource = "def_read";
// Strings up to this size, nearly all, are read without taking memory for them.
constexpr unsigned kStackStringSize = 1024;

// The header is read field by field, in this order.
using Header = _qz_LOG_ldf_header_struct;
static_assert(sizeof(Header) == qzlog::ldf::kHeaderSize);
static_assert(offsetof(Header, version_tag) == qzlog::ldf::kVersionTagOffset);
static_assert(sizeof(Header::version_tag) == qzlog::ldf::kVersionTagSize);
static_assert(offsetof(Header, global_attr_count) == qzlog::ldf::kGlobalCountOffset);
static_assert(offsetof(Header, global_attr_offset) == qzlog::ldf::kGlobalOffsetOffset);
static_assert(offsetof(Header, entry_count) == qzlog::ldf::kEntryCountOffset);
static_assert(offsetof(Header, entry_map_offset) == qzlog::ldf::kEntryMapOffsetOffset);

template <std::size_t count>
bool read_words(std::FILE* file, unsigned (&words)[count]) {
  for (unsigned& word : words) {
    if (!qz_be_read_int4(file, &word)) return false;
  }
  return true;
}

/// Whether `size_bytes` bytes follow the stream's position. The position stays.
bool has_bytes_left(std::FILE* file, unsigned size_bytes) {
  const long long position = QZ_ftell(file);
  if (position < 0 || QZ_fseek(file, 0, SEEK_END) != 0) return false;
  const long long end = QZ_ftell(file);
  return QZ_fseek(file, position, SEEK_SET) == 0 && end - position >= size_bytes;
}

bool report_no_buffer() {
  QZ_DEBUG_RECORD(1, kSource, "%s:%d new p_buffer\n");
  return false;
}

bool read_into(std::FILE* file, char* buffer, unsigned size_bytes, qz_String& text) {
  if (!qz_read_data_chunk(file, buffer, size_bytes)) return false;
  try {
    text._assign(buffer, static_cast<unsigned>(strnlen(buffer, size_bytes)));
  } catch (const QZX_memory_alloc&) {
    return report_no_buffer();
  }
  return true;
}

}  // namespace

bool _qz_LOG_read_file_header(std::FILE* file, _qz_LOG_ldf_header_struct& header) {
  if (!qz_be_read_int4(file, &header.magic) || header.magic != qzlog::ldf::kMagic) return false;
  return qz_read_data_chunk(file, header.format_bytes, sizeof(header.format_bytes)) &&
         read_words(file, header.reserved_at_8) &&
         qz_read_data_chunk(file, header.version_tag, sizeof(header.version_tag)) &&
         read_words(file, header.reserved_at_24) && qz_be_read_int4(file, &header.global_attr_count) &&
         qz_be_read_int4(file, &header.global_attr_offset) && qz_be_read_int4(file, &header.entry_count) &&
         qz_be_read_int4(file, &header.reserved_at_52) && qz_be_read_int4(file, &header.entry_map_offset) &&
         read_words(file, header.reserved_at_60) && read_words(file, header.reserved_at_76);
}

bool _qz_LOG_read_string(std::FILE* file, qz_String& text) {
  unsigned length = 0;
  if (!qz_be_read_int4(file, &length)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_int4\n");
    return false;
  }
  if (length == 0) {
    text._assign(nullptr, 0);
    return true;
  }
  if (length <= kStackStringSize) {
    char buffer[kStackStringSize];
    return read_into(file, buffer, length, text);
  }
  if (!has_bytes_left(file, length)) return false;
  const std::unique_ptr<char[]> buffer(new (std::nothrow) char[length]);
  return buffer == nullptr ? report_no_buffer() : read_into(file, buffer.get(), length, text);
}

bool _qz_LOG_read_property_flag(std::FILE* file, qz_String& name, unsigned int& flag) {
  return _qz_LOG_read_string(file, name) && qz_be_read_int4(file, &flag);
}

bool _qz_LOG_read_attribute(std::FILE* file, qz_String& name, qz_AttributeType& type, qz_String& redirection_name) {
  unsigned code = 0;
  if (!_qz_LOG_read_string(file, name) || !qz_be_read_int4(file, &code)) return false;
  type = static_cast<qz_AttributeType>(code & qzlog::ldf::kTypeCodeMask);
  return _qz_LOG_read_string(file, redirection_name);
}

bool _qz_LOG_read_entry_info(std::FILE* file, unsigned int& entry_id, unsigned int& entry_word,
                             unsigned int& property_mask, qz_String& default_msg_id, qz_String& default_msg_text,
                             qz_String& selector_attribute_name) {
  return qz_be_read_int4(file, &entry_id) && qz_be_read_int4(file, &entry_word) &&
         qz_be_read_int4(file, &property_mask) && _qz_LOG_read_string(file, default_msg_id) &&
         _qz_LOG_read_string(file, default_msg_text) && _qz_LOG_read_string(file, selector_attribute_name);
}

bool _qz_LOG_read_selector_msg(std::FILE* file, unsigned int& index, unsigned int& value, qz_String& message_id,
                               qz_String& message_text) {
  if (!qz_be_read_int4(file, &index)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_int4 selector_msg_index error\n");
    return false;
  }
  if (!qz_be_read_int4(file, &value)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_int4 selector_value error\n");
    return false;
  }
  if (!_qz_LOG_read_string(file, message_id)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_string selector_msg_id error\n");
    return false;
  }
  if (!_qz_LOG_read_string(file, message_text)) {
    QZ_DEBUG_RECORD(1, kSource, "%s:%d qz_be_read_string selector_msg_text error\n");
    return false;
  }
  return true;
}

bool _qz_LOG_read_entry_id_offset_mapping(std::FILE* file, unsigned int& entry_id, unsigned int& offset) {
  return qz_be_read_int4(file, &entry_id) && qz_be_read_int4(file, &offset);
}
