#ifndef QZLOG_TOOLS_COMPILER_SOURCE_SCALAR_VALUES_H
#define QZLOG_TOOLS_COMPILER_SOURCE_SCALAR_VALUES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/compiler/source/yaml_tree.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// What a source's scalars mean. Scalars are typed here, not by YAML, so 010 is ten and 2.10 is a text.
/// Each function reports what it refuses and returns nothing then; `what` names the value ("the entry's name").

/// Any text without a NUL. A plain scalar is a text as it stands, except for nothing at all and `~`.
std::optional<std::string> read_text(const YamlNode& node, std::string_view what, Findings& diagnostics);

/// An unsigned 32-bit number, decimal or 0x hexadecimal, not in quotes.
std::optional<std::uint32_t> read_number(const YamlNode& node, std::string_view what, Findings& diagnostics);

/// MAJOR.MINOR in at most 8 bytes, neither with a leading zero.
bool is_version(std::string_view text);
std::optional<std::string> read_version(const YamlNode& node, Findings& diagnostics);

/// Whether a text is [A-Z][A-Z0-9_]*.
bool is_entry_name(std::string_view text);

std::optional<std::string> read_entry_name(const YamlNode& node, Findings& diagnostics);

/// A name that a placeholder and a stored template can hold: not empty, no percent sign, brace or colon.
std::optional<std::string> read_attribute_name(const YamlNode& node, Findings& diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_SCALAR_VALUES_H
