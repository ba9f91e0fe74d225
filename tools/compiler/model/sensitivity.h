#ifndef QZLOG_TOOLS_COMPILER_MODEL_SENSITIVITY_H
#define QZLOG_TOOLS_COMPILER_MODEL_SENSITIVITY_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "definitions/names_format.h"
#include "qzlog/logattrib.h"

namespace qzlog_compiler {

/// "keep", "hash" or "drop".
std::string_view sensitivity_name(qzlog::Sensitivity sensitivity);
std::optional<qzlog::Sensitivity> find_sensitivity(std::string_view name);
std::span<const std::string_view> all_sensitivity_names();

/// What readers take the mark of a compiled file for.
qzlog::Sensitivity sensitivity_of_mark(std::uint32_t mark);

/// Whether values of a type can be hashed: texts can, and what takes their place is a text as well.
bool can_be_hashed(qz_AttributeType type);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MODEL_SENSITIVITY_H
