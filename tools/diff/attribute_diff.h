#ifndef QZLOG_TOOLS_DIFF_ATTRIBUTE_DIFF_H
#define QZLOG_TOOLS_DIFF_ATTRIBUTE_DIFF_H

#include <optional>
#include <vector>

#include "tools/compiler/model/definition_model.h"
#include "tools/diff/diff_rules.h"

namespace qzlog_compiler {

/// One attribute in two lists; null where a list lacks it.
struct AttributePair {
  const AttributeDefinition* before = nullptr;
  const AttributeDefinition* after = nullptr;
};

struct AttributeMatch {
  std::vector<AttributePair> pairs;  ///< in the order of the old list, added attributes last
  bool reordered = false;            ///< whether the attributes of both lists stand in another order
};

/// Finds the attributes of one list in another: by name, then, as renamed, by position and type.
AttributeMatch match_attributes(const std::vector<AttributeDefinition>& old_list,
                                const std::vector<AttributeDefinition>& new_list);

/// What it means that an attribute's type is another one; none for the same type.
std::optional<DiffRule> type_change(qz_AttributeType before, qz_AttributeType after);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_DIFF_ATTRIBUTE_DIFF_H
