#ifndef QZLOG_TOOLS_COMPILER_MODEL_DEFINITION_MODEL_H
#define QZLOG_TOOLS_COMPILER_MODEL_DEFINITION_MODEL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "definitions/definition_format.h"
#include "definitions/names_format.h"
#include "qzlog/logattrib.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// Counts of attributes, global attributes and selector messages are kept in 8 bits by the readers of compiled files.
inline constexpr std::size_t kMaximumCount = qzlog::ldf::kMostElements;

struct AttributeDefinition {
  std::string name;
  qz_AttributeType type = TypeUnknown;
  std::string redirect;
  SourcePosition position;
  qzlog::Sensitivity sensitivity = qzlog::Sensitivity::kKeep;
};

/// A message as its author wrote it and as the compiled file stores it. The position is unknown where the source leaves
/// the message out, and for everything that was read from a compiled file.
struct MessageText {
  std::string written;  ///< with placeholders, or the template itself where `raw`
  bool raw = false;
  std::string stored;
  SourcePosition position;
  std::vector<SourcePosition> references = {};  ///< places of its placeholders or references, in their order
};

struct SelectorMessage {
  std::uint32_t index = 0;
  std::uint32_t value = 0;
  std::string id;
  MessageText message;
  SourcePosition index_position;
  SourcePosition value_position;
};

struct Selector {
  std::string attribute;  ///< empty: none
  std::vector<SelectorMessage> messages;
  SourcePosition position;
};

struct EntryDefinition {
  std::uint32_t id = 0;
  std::string name;     ///< empty where a compiled file does not know it
  std::string summary;  ///< documentation only
  std::uint32_t mask = 0;
  std::uint32_t word = 0;
  std::string message_id;
  MessageText message;
  std::vector<AttributeDefinition> attributes;
  Selector selector;

  SourcePosition position;
  SourcePosition name_position;
  SourcePosition mask_position;  ///< unknown where the source leaves the key out, like the next two
  SourcePosition word_position;
  SourcePosition message_id_position;
};

/// Everything that one source or one compiled file defines, with all defaults filled in.
struct DefinitionModel {
  std::string version;
  std::vector<AttributeDefinition> globals;
  std::vector<EntryDefinition> entries;
  /// It knows the entries' names and summaries and the attributes' marks: those of a source, or of a compiled file with
  /// a names section.
  bool has_names = false;
  std::string product = {};  ///< its name, by which other programs know events; only a source has it
};

const AttributeDefinition* find_attribute(const std::vector<AttributeDefinition>& attributes, std::string_view name);

/// The attribute that picks the entry's selector messages, null when it has none: a selector name that no attribute of
/// the entry has makes no selector.
const AttributeDefinition* selector_attribute(const EntryDefinition& entry);

/// Lookups by hash in a model, which has to outlive the index and stay as it is.
class ModelIndex {
 public:
  explicit ModelIndex(const DefinitionModel& model);

  const DefinitionModel& model() const { return *model_; }
  const EntryDefinition* find_entry(std::uint32_t id) const;
  const EntryDefinition* find_entry_by_name(std::string_view name) const;
  const AttributeDefinition* find_global(std::string_view name) const;

 private:
  const DefinitionModel* model_;
  std::unordered_map<std::uint32_t, const EntryDefinition*> entries_;
  std::unordered_map<std::string_view, const EntryDefinition*> names_;
  std::unordered_map<std::string_view, const AttributeDefinition*> globals_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MODEL_DEFINITION_MODEL_H
