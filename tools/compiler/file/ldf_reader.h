#ifndef QZLOG_TOOLS_COMPILER_FILE_LDF_READER_H
#define QZLOG_TOOLS_COMPILER_FILE_LDF_READER_H

#include <optional>
#include <string_view>

#include "tools/compiler/file/ldf_records.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

struct LdfFile {
  DefinitionModel model;  ///< everything before the damage, texts as `raw`
  std::optional<LdfDamage> damage;
  /// Of the names section alone, without which everything else is right: `model` then has no names.
  std::optional<LdfDamage> names_damage = {};
};

/// True when the bytes begin like a compiled definition file.
bool looks_like_ldf(std::string_view bytes);

inline constexpr const char* kWrongMagic = "the file does not begin with \".LDF\"";

/// Reads a whole compiled definition file. Entries stand in the order of the map; of an ID that is listed twice the
/// later pair counts, as it does for the library. Entry records that overlap are damage: no writer makes them, and they
/// would let a small file describe more than memory holds.
LdfFile read_ldf(std::string_view bytes);

/// A record as a part of the model, texts as `raw`.
AttributeDefinition to_definition(const LdfAttributeRecord& record);
EntryDefinition to_definition(const LdfEntryRecord& record);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_FILE_LDF_READER_H
