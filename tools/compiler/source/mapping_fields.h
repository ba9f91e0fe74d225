#ifndef QZLOG_TOOLS_COMPILER_SOURCE_MAPPING_FIELDS_H
#define QZLOG_TOOLS_COMPILER_SOURCE_MAPPING_FIELDS_H

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/compiler/source/yaml_tree.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

struct KnownKey {
  std::string_view key;
  bool required = false;
};

/// The values of a mapping with known keys. Unknown, repeated and missing keys are reported while it is read; of a
/// repeated key the first value counts.
class MappingFields {
 public:
  /// `what` names the mapping in diagnostics ("an entry"). A node that is no mapping is reported and has no fields.
  MappingFields(const YamlNode& node, std::span<const KnownKey> keys, std::string_view what, Findings& diagnostics);

  /// False when the node was no mapping.
  bool is_mapping() const { return is_mapping_; }

  /// Null when the mapping lacks the key.
  const YamlNode* find(std::string_view key) const;

 private:
  static constexpr std::size_t kMaximumFields = 11;

  std::optional<std::size_t> index_of(std::string_view key) const;
  void take(const YamlNode& key, const YamlNode& value, std::string_view what, Findings& diagnostics);

  std::span<const KnownKey> keys_;
  std::array<std::optional<YamlNode>, kMaximumFields> values_;
  std::array<SourcePosition, kMaximumFields> key_positions_;
  bool is_mapping_;
};

/// What a node is, for "expected ..., found ...".
std::string_view kind_name(const YamlNode& node);

/// Reports a node of the wrong kind.
void report_wrong_type(const YamlNode& node, std::string_view expected, Findings& diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_MAPPING_FIELDS_H
