#ifndef QZLOG_TOOLS_COMPILER_TEXT_HEXADECIMAL_H
#define QZLOG_TOOLS_COMPILER_TEXT_HEXADECIMAL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_compiler {

enum class HexadecimalLetters { kCapital, kSmall };

/// At least `digits` hexadecimal digits.
std::string hexadecimal(std::uint64_t value, std::size_t digits,
                        HexadecimalLetters letters = HexadecimalLetters::kCapital);

/// "0x00000005", as masks are written.
std::string bits_text(std::uint32_t bits);

/// Two digits for each byte, with `separator` between them.
std::string hexadecimal_bytes(std::string_view bytes, std::string_view separator = "");

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_TEXT_HEXADECIMAL_H
