#ifndef QZLOG_TOOLS_COMPILER_SOURCE_ENTRY_LOADER_H
#define QZLOG_TOOLS_COMPILER_SOURCE_ENTRY_LOADER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/compiler/source/accepted_warnings.h"
#include "tools/compiler/source/attribute_list.h"
#include "tools/compiler/source/mapping_fields.h"
#include "tools/compiler/source/yaml_tree.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// What entries are read with; everything has to outlive the loader.
struct EntryContext {
  std::string_view source;
  RenderingPaths path = RenderingPaths::kBoth;
  const ModelIndex* standard = nullptr;  ///< null: the source is not an auxiliary one
  const AttributeNames* globals = nullptr;
  Findings* diagnostics = nullptr;
  AcceptedWarnings* accepted = nullptr;
};

struct LoadedEntry {
  EntryDefinition entry;
  bool has_id = false;
};

/// Reads one entry of a definition source after the other.
class EntryLoader {
 public:
  explicit EntryLoader(const EntryContext& context) : context_(context) {}

  LoadedEntry load(const YamlNode& node);

 private:
  void load_names(const MappingFields& fields);
  void load_numbers(const MappingFields& fields);
  void load_messages(const MappingFields& fields, const YamlNode& node);
  void load_selector(const YamlNode& node);
  void load_selector_messages(const YamlNode& list, std::optional<std::uint32_t> value_limit);
  std::optional<std::uint32_t> check_selector_attribute(const YamlNode& node);
  void load_accept(const MappingFields& fields, AcceptScope scope, const YamlNode& node);
  std::optional<MessageText> load_message(const MappingFields& fields, std::string_view key);
  SelectorMessage load_selector_message(const YamlNode& node, std::optional<std::uint32_t> value_limit);
  void check_raw(const MessageText& message, const YamlNode& node);
  std::string lower(const MessageText& message, const YamlNode& node);
  std::vector<std::string_view> known_names() const;
  std::string load_message_id(const YamlNode& node);
  std::optional<std::uint32_t> load_number(const MappingFields& fields, std::string_view key, SourcePosition& position);
  std::optional<qz_AttributeType> find_type(std::string_view name) const;
  Findings& diagnostics() { return *context_.diagnostics; }

  EntryContext context_;
  LoadedEntry loaded_;
  AttributeNames names_;
  const EntryDefinition* standard_entry_ = nullptr;
  /// Comparing a name with all others takes long beside everything else, and nobody reads this many hints.
  std::size_t suggestions_left_ = 1000;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_ENTRY_LOADER_H
