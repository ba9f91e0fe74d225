#ifndef QZLOG_TOOLS_COMPILER_LDF_TEXT_H
#define QZLOG_TOOLS_COMPILER_LDF_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// How the forms of `inspect` write what a compiled file holds.
namespace qzlog_compiler {

/// At least `digits` hexadecimal digits, in capitals.
std::string hexadecimal(std::size_t value, std::size_t digits);

/// "161 (0xA1)"
std::string offset_text(std::size_t offset);

/// "0x00000005"
std::string bits_text(std::uint32_t bits);

/// Two digits for each byte, with `separator` between them.
std::string hexadecimal_bytes(std::string_view bytes, std::string_view separator = "");

/// The type's short name; with the code where it has no name, or more bits than count.
std::string type_text(std::uint32_t code);

/// A text in double quotes, safe to print.
std::string shown_text(std::string_view text);

/// Characters, for aligning columns; `text` is UTF-8.
std::size_t character_count(std::string_view text);

/// At most `columns` characters, the last of them an ellipsis where something is cut; 0 for all.
std::string cut_line(std::string text, std::size_t columns);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_LDF_TEXT_H
