#ifndef QZLOG_TOOLS_EXPLAIN_ENTRY_SEARCH_H
#define QZLOG_TOOLS_EXPLAIN_ENTRY_SEARCH_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/definitions/entry_view.h"

namespace qzlog_tool {

/// The number that a text writes in decimal or with 0x in hexadecimal; none for everything else.
std::optional<std::uint32_t> parse_entry_id(std::string_view text);

/// The ID of the entry that a text names, by number or by name. Throws CommandError (findings), with what it may have
/// meant, when no entry has it.
std::uint32_t find_entry_id(const std::string& text, const DefinitionPair& definitions);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_EXPLAIN_ENTRY_SEARCH_H
