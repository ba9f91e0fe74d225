#ifndef QZLOG_TOOLS_COMPILER_MODEL_ATTRIBUTE_TYPE_H
#define QZLOG_TOOLS_COMPILER_MODEL_ATTRIBUTE_TYPE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "qzlog/logattrib.h"

namespace qzlog_compiler {

/// The type of a full name (`TypeChar32`) or of the same without `Type`.
std::optional<qz_AttributeType> find_attribute_type(std::string_view name);

/// The name without `Type`; "Unknown" for a code without a name.
std::string_view short_type_name(qz_AttributeType type);

/// All names without `Type`, separated by a comma and a blank.
std::string all_type_names();

/// Every format character that a placeholder can ask for.
inline constexpr std::string_view kFormatCharacters = "sCPDTfdu";

/// Format characters as texts list them, with a blank between.
std::string listed_formats(std::string_view formats);

/// A reference with another format shows nothing.
bool is_known_format(char format);

/// One of the formats that show the same: d and u are one.
constexpr char canonical_format(char format) { return format == 'u' ? 'd' : format; }

/// The formats that both rendering paths accept for a type, the one that suits it best first; empty for GUID, which
/// cannot be set, and for unknown types.
std::string_view accepted_formats(qz_AttributeType type);

/// The formats that a placeholder without one stands for: one character, or "DT" for a date, a blank and a time.
std::string_view default_formats(qz_AttributeType type);

/// The largest value of a type that can choose a selector message; none for the types that cannot.
std::optional<std::uint32_t> selector_value_limit(qz_AttributeType type);

/// The type under which messages know a standard information field, whatever the definitions say.
std::optional<qz_AttributeType> find_standard_field(std::string_view name);

/// The names of the standard information fields.
std::span<const std::string_view> standard_field_names();

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_MODEL_ATTRIBUTE_TYPE_H
