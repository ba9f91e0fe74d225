#ifndef QZLOG_TOOLS_INSPECT_LDF_TEXT_H
#define QZLOG_TOOLS_INSPECT_LDF_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// How the forms of `inspect` write what a compiled file holds.
namespace qzlog_compiler {

/// "161 (0xA1)"
std::string offset_text(std::size_t offset);

/// The type's short name; with the code where it has no name, or more bits than count.
std::string type_text(std::uint32_t code);

/// A text in double quotes, safe to print.
std::string shown_text(std::string_view text);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_LDF_TEXT_H
