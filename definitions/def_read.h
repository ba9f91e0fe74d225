#ifndef QZLOG_DEFINITIONS_DEF_READ_H
#define QZLOG_DEFINITIONS_DEF_READ_H

#include <cstdio>

#include "qzlog/logattrib.h"
#include "qzlog/qz_string.h"

/// Readers of the records of a log definition file, one function per kind of record. Each reads at the stream's
/// position and leaves it behind the record; false means that the record is cut short (the position is then
/// unspecified). None throws. Lengths are compared with what is left of the file before memory is taken for them.

/// The fixed header, at offset 0. Reserved words are read and kept, and nothing interprets them.
struct _qz_LOG_ldf_header_struct {
  unsigned magic;
  unsigned char format_bytes[4];
  unsigned reserved_at_8[2];
  char version_tag[8];  // text, zero-padded, not necessarily terminated
  unsigned reserved_at_24[4];
  unsigned global_attr_count;
  unsigned global_attr_offset;
  unsigned entry_count;
  unsigned reserved_at_52;
  unsigned entry_map_offset;
  unsigned reserved_at_60[4];
  unsigned reserved_at_76[13];
};

/// False at once, before reading on, when the file does not begin with the magic number.
bool _qz_LOG_read_file_header(std::FILE* file, _qz_LOG_ldf_header_struct& header);

/// A length-prefixed string; the text is what precedes its first zero byte, or all of it without one.
bool _qz_LOG_read_string(std::FILE* file, qz_String& text);

bool _qz_LOG_read_property_flag(std::FILE* file, qz_String& name, unsigned int& flag);

/// Of the type code only the low 8 bits are kept.
bool _qz_LOG_read_attribute(std::FILE* file, qz_String& name, qz_AttributeType& type, qz_String& redirection_name);

/// The fixed part of an entry record, up to the attribute count.
bool _qz_LOG_read_entry_info(std::FILE* file, unsigned int& entry_id, unsigned int& entry_word,
                             unsigned int& property_mask, qz_String& default_msg_id, qz_String& default_msg_text,
                             qz_String& selector_attribute_name);

bool _qz_LOG_read_selector_msg(std::FILE* file, unsigned int& index, unsigned int& value, qz_String& message_id,
                               qz_String& message_text);

bool _qz_LOG_read_entry_id_offset_mapping(std::FILE* file, unsigned int& entry_id, unsigned int& offset);

#endif  // QZLOG_DEFINITIONS_DEF_READ_H
