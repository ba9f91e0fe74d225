#ifndef QZLOG_DEFINITIONS_RECORD_READER_H
#define QZLOG_DEFINITIONS_RECORD_READER_H

#include "definitions/record_bytes.h"
#include "qzlog/logattrib.h"
#include "qzlog/qz_string.h"

namespace qzlog {

/// Readers of what the records of a log definition file are made of, as def_read.h has them for streams. False means
/// that a record is cut short. None throws. Lengths are compared with what is left before memory is taken for them.

bool read_word(RecordBytes& bytes, unsigned& word) noexcept;
bool read_string(RecordBytes& bytes, qz_String& text);
bool read_attribute(RecordBytes& bytes, qz_String& name, qz_AttributeType& type, qz_String& redirection_name);
bool read_entry_info(RecordBytes& bytes, unsigned& entry_id, unsigned& entry_word, unsigned& property_mask,
                     qz_String& default_msg_id, qz_String& default_msg_text, qz_String& selector_attribute_name);
bool read_selector_msg(RecordBytes& bytes, unsigned& index, unsigned& value, qz_String& message_id,
                       qz_String& message_text);

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_RECORD_READER_H
