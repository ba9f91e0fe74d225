#ifndef QZLOG_TOOLS_COMPILER_SOURCE_ATTRIBUTE_LIST_H
#define QZLOG_TOOLS_COMPILER_SOURCE_ATTRIBUTE_LIST_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/compiler/model/definition_model.h"
#include "tools/compiler/source/yaml_tree.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// The types of one list's attributes by name. Names are views into the YAML tree.
class AttributeNames {
 public:
  /// None when the list has no such name. An attribute with a mistake in its type has `TypeUnknown`, and so has every
  /// further name when the name of an attribute could not be read.
  std::optional<qz_AttributeType> find(std::string_view name) const;

  /// The place of the attribute that has the name already, unknown when the name was new.
  SourcePosition add(std::string_view name, qz_AttributeType type, SourcePosition position);

  /// Adds the names to the candidates, in no particular order.
  void append_to(std::vector<std::string_view>& candidates) const;

  void set_incomplete() { complete_ = false; }

 private:
  struct Row {
    qz_AttributeType type;
    SourcePosition position;
  };

  std::unordered_map<std::string_view, Row> rows_;
  bool complete_ = true;
};

enum class AttributeListKind { kOwn, kGlobal };

/// Reads a list of attributes; mistakes are reported, and attributes without a readable name are left out.
std::vector<AttributeDefinition> load_attribute_list(const YamlNode& list, AttributeListKind kind,
                                                     AttributeNames& names, Findings& diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_ATTRIBUTE_LIST_H
