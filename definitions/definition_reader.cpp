#include "definitions/definition_reader.h"

#include <algorithm>
#include <utility>

#include "definitions/record_reader.h"
#include "foundation/unshared_file.h"
#include "qzlog/qz_exception.h"
#include "util/debug_record.h"

namespace qzlog {
namespace {

void require(bool transferred) {
  if (!transferred) throw_unreadable_definition_file();
}

bool equal(const qz_String& text, const char* other) { return text.compare_string(other) == 0; }

/// The fixed part of an entry record and its attribute count.
struct EntryInfo {
  unsigned int entry_id = 0;
  unsigned int entry_word = 0;
  unsigned int property_mask = 0;
  qz_String default_msg_id;
  qz_String default_msg_text;
  qz_String selector_attribute_name;
  unsigned int attribute_count = 0;

  /// An empty selector name means no selector, also for an attribute whose name is empty.
  bool is_selector(const qz_String& name) const {
    return !name.empty() && equal(name, selector_attribute_name.c_str());
  }
};

EntryInfo read_info(RecordBytes& bytes, unsigned int entry_id) {
  EntryInfo info;
  require(read_entry_info(bytes, info.entry_id, info.entry_word, info.property_mask, info.default_msg_id,
                          info.default_msg_text, info.selector_attribute_name));
  require(read_word(bytes, info.attribute_count));
  if (info.entry_id != entry_id) {
    throw QZX_logging_invalid_definition("<QZX_logging_invalid_definition> The definition file is corrupted.", 0);
  }
  return info;
}

void check_selector_attribute(const EntryInfo& info, const _qz_LOG_log_definition& def) {
  const _qz_LOG_attribute_entry* const selector = def.get_selector_attribute();
  if (selector == nullptr || info.selector_attribute_name.empty()) return;
  if (!equal(info.selector_attribute_name, selector->get_name())) {
    throw QZX_logging_invalid_definition("<QZX_logging_invalid_definition> selector_attribute name conflict.", 0);
  }
}

void read_attributes(RecordBytes& bytes, const EntryInfo& info, _qz_LOG_log_definition& def) {
  qz_String name;
  qz_String redirection_name;
  qz_AttributeType type = TypeUnknown;
  for (unsigned i = 0; i < info.attribute_count; ++i) {
    require(read_attribute(bytes, name, type, redirection_name));
    const bool is_selector = info.is_selector(name);
    // Only the selector attribute may be repeated; it then replaces the one that the definition has.
    if (!is_selector && def.find_own_attribute(AttributeName(name.c_str())) != nullptr) {
      qz_String text("<QZX_logging_invalid_definition> attribute ");
      text += name.c_str();
      text += " already exist.";
      throw QZX_logging_invalid_definition(text.c_str(), 0);
    }
    def.add_attr_info(name.c_str(), static_cast<unsigned char>(type), is_selector, redirection_name.c_str());
  }
}

/// Whether one of the first `count` messages, those of the standard file, has this index or value.
bool conflicts_with_selector(const _qz_LOG_log_definition& def, unsigned count, unsigned index, unsigned value) {
  for (unsigned i = 0; i < std::min<unsigned>(count, def.get_selector_msg_count()); ++i) {
    const _qz_LOG_selector_message& message = def.get_selector_msg_at(static_cast<unsigned char>(i));
    if (message.get_index() == index || message.get_value() == value) return true;
  }
  return false;
}

void read_selector_messages(RecordBytes& bytes, bool is_aux, _qz_LOG_log_definition& def) {
  unsigned count = 0;
  require(read_word(bytes, count));
  const unsigned former_count = def.get_selector_msg_count();
  qz_String message_id;
  qz_String message_text;
  for (unsigned i = 0; i < count; ++i) {
    unsigned index = 0;
    unsigned value = 0;
    require(read_selector_msg(bytes, index, value, message_id, message_text));
    if (is_aux && conflicts_with_selector(def, former_count, index, value)) {
      throw QZX_logging_invalid_definition(
          "<QZX_logging_invalid_definition> selector message index in AUX definition file conflict with STD definition",
          0);
    }
    def.add_selector_message(index, value, message_id.c_str(), message_text.c_str());
  }
}

}  // namespace

DefinitionStream open_definition_file(const char* path) {
  int descriptor = -1;
  FileHandle file = open_unshared(path, &descriptor);
  if (file != nullptr) return {std::move(file), descriptor};
  qz_String text("<QZX_logging_invalid_definition> Unable to access definition file \"");
  text += path;
  text += "\".";
  throw QZX_logging_invalid_definition(text.c_str(), 0);
}

void throw_unreadable_definition_file() {
  QZ_DEBUG_RECORD(1, kDefinitionFileSource, "%s:%d _throw_file_io_error()\n");
  throw QZX_logging_invalid_definition(
      "<QZX_logging_invalid_definition> Unable to access definition file successfully.", 0);
}

void seek_in_definition_file(std::FILE* file, long long offset) { require(QZ_fseek(file, offset, SEEK_SET) == 0); }

_qz_LOG_ldf_header_struct read_definition_header(std::FILE* file) {
  _qz_LOG_ldf_header_struct header = {};
  seek_in_definition_file(file, 0);
  require(_qz_LOG_read_file_header(file, header));
  return header;
}

void read_global_attributes(const DefinitionStream& stream, const _qz_LOG_ldf_header_struct& header) {
  std::FILE* const file = stream.get();
  seek_in_definition_file(file, header.global_attr_offset);
  for (unsigned i = 0; i < header.global_attr_count; ++i) {
    qz_String name;
    qz_String redirection_name;
    qz_AttributeType type = TypeUnknown;
    require(_qz_LOG_read_attribute(file, name, type, redirection_name));
    _qz_LOG_log_definition::add_global_attr_info(name.c_str(), static_cast<unsigned char>(type), stream.names());
  }
}

void read_definition(const DefinitionStream& stream, unsigned offset, unsigned entry_id, bool is_aux,
                     _qz_LOG_log_definition& def) {
  BlockBytes bytes(stream.blocks(), offset);
  const EntryInfo info = read_info(bytes, entry_id);
  if (is_aux) check_selector_attribute(info, def);
  read_attributes(bytes, info, def);
  read_selector_messages(bytes, is_aux, def);
  def.set_record_numbers(info.entry_id, info.entry_word, info.property_mask);
  if (!is_aux || (!info.default_msg_id.empty() && !info.default_msg_text.empty())) {
    def.set_default_msg_id(info.default_msg_id.c_str());
    def.set_default_msg_text(info.default_msg_text.c_str());
  }
}

}  // namespace qzlog
