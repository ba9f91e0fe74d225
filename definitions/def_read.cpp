#include "definitions/def_read.h"

#include <cstddef>

#include "definitions/definition_format.h"
#include "definitions/record_reader.h"
#include "foundation/qz_libc.h"
#include "qzlog/file_io.h"

namespace {

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

/// What follows the position of a stream.
class StreamBytes final : public qzlog::RecordBytes {
 public:
  explicit StreamBytes(std::FILE* file) : file_(file) {}

  bool read(void* target, std::size_t size) noexcept override {
    return qz_read_data_chunk(file_, target, static_cast<unsigned>(size));
  }
  bool has_left(std::size_t size) noexcept override {
    const long long position = QZ_ftell(file_);
    if (position < 0 || QZ_fseek(file_, 0, SEEK_END) != 0) return false;
    const long long end = QZ_ftell(file_);
    return QZ_fseek(file_, position, SEEK_SET) == 0 && end >= position &&
           static_cast<unsigned long long>(end - position) >= size;
  }

 private:
  std::FILE* file_;
};

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
  StreamBytes bytes(file);
  return qzlog::read_string(bytes, text);
}

bool _qz_LOG_read_property_flag(std::FILE* file, qz_String& name, unsigned int& flag) {
  StreamBytes bytes(file);
  return qzlog::read_string(bytes, name) && qzlog::read_word(bytes, flag);
}

bool _qz_LOG_read_attribute(std::FILE* file, qz_String& name, qz_AttributeType& type, qz_String& redirection_name) {
  StreamBytes bytes(file);
  return qzlog::read_attribute(bytes, name, type, redirection_name);
}

bool _qz_LOG_read_entry_info(std::FILE* file, unsigned int& entry_id, unsigned int& entry_word,
                             unsigned int& property_mask, qz_String& default_msg_id, qz_String& default_msg_text,
                             qz_String& selector_attribute_name) {
  StreamBytes bytes(file);
  return qzlog::read_entry_info(bytes, entry_id, entry_word, property_mask, default_msg_id, default_msg_text,
                                selector_attribute_name);
}

bool _qz_LOG_read_selector_msg(std::FILE* file, unsigned int& index, unsigned int& value, qz_String& message_id,
                               qz_String& message_text) {
  StreamBytes bytes(file);
  return qzlog::read_selector_msg(bytes, index, value, message_id, message_text);
}

bool _qz_LOG_read_entry_id_offset_mapping(std::FILE* file, unsigned int& entry_id, unsigned int& offset) {
  return qz_be_read_int4(file, &entry_id) && qz_be_read_int4(file, &offset);
}
