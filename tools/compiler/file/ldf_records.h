#ifndef QZLOG_TOOLS_COMPILER_FILE_LDF_RECORDS_H
#define QZLOG_TOOLS_COMPILER_FILE_LDF_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/compiler/file/ldf_cursor.h"

/// The records of a compiled definition file as they stand in it, read field by field. Each function reads at the
/// cursor; of a record that is damaged it returns what stands before the damage, which the cursor knows. Texts view the
/// file's bytes.
namespace qzlog_compiler {

struct LdfHeader {
  std::string_view format_bytes;
  std::string_view version_tag;  ///< with the zero bytes that fill it up
  std::uint32_t global_count = 0;
  std::uint32_t global_offset = 0;
  std::uint32_t entry_count = 0;
  std::uint32_t entry_map_offset = 0;

  std::string_view version() const { return version_tag.substr(0, version_tag.find('\0')); }
};

/// A wrong magic is no damage here.
LdfHeader read_ldf_header(LdfCursor& cursor);

struct LdfAttributeRecord {
  std::size_t offset = 0;
  LdfText name;
  std::uint32_t type_code = 0;  ///< as stored; the low 8 bits count
  LdfText redirect;
};

LdfAttributeRecord read_ldf_attribute(LdfCursor& cursor);

using LdfAttributeSink = std::function<void(const LdfAttributeRecord&)>;

/// Hands on the global attributes, or those before the damage. An empty sink takes none.
void read_ldf_globals(LdfCursor& cursor, std::uint32_t count, const LdfAttributeSink& sink);

struct LdfPair {
  std::uint32_t id = 0;
  std::uint32_t record_offset = 0;
};

LdfPair read_ldf_pair(LdfCursor& cursor);

struct LdfSelectorRecord {
  std::size_t offset = 0;
  std::uint32_t index = 0;
  std::uint32_t value = 0;
  LdfText id;
  LdfText text;
};

struct LdfEntryRecord {
  std::size_t offset = 0;
  std::size_t size = 0;  ///< up to the damage, if there is one
  std::uint32_t id = 0;
  std::uint32_t word = 0;
  std::uint32_t mask = 0;
  LdfText message_id;
  LdfText message;
  LdfText selector;
  std::optional<std::uint32_t> attribute_count;  ///< as stored; none when the damage comes before it
  std::vector<LdfAttributeRecord> attributes;    ///< those that are whole
  std::optional<std::uint32_t> selector_message_count;
  std::vector<LdfSelectorRecord> selector_messages;
  std::optional<LdfDamage> cut;  ///< where the record stops making sense, if it does

  /// Whether ID, word and mask are there.
  bool has_numbers() const { return size >= sizeof id + sizeof word + sizeof mask; }
};

LdfEntryRecord read_ldf_entry(LdfCursor& cursor);

/// Take the items of a record's lists, those that are whole, as they are read. Either may be empty.
struct LdfItemSinks {
  LdfAttributeSink attribute;
  std::function<void(const LdfSelectorRecord&)> selector_message;
};

/// The same with the lists handed on instead of kept, for a record can be as long as its file.
LdfEntryRecord read_ldf_entry(LdfCursor& cursor, const LdfItemSinks& sinks);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_FILE_LDF_RECORDS_H
