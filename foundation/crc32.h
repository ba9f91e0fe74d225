#ifndef QZLOG_FOUNDATION_CRC32_H
#define QZLOG_FOUNDATION_CRC32_H

#include <array>
#include <cstdint>
#include <string_view>

namespace qzlog {

/// The remainders of all bytes, for crc32.
inline constexpr std::array<std::uint32_t, 256> kCrc32Remainders = [] {
  std::array<std::uint32_t, 256> remainders{};
  for (std::uint32_t byte = 0; byte < remainders.size(); ++byte) {
    std::uint32_t remainder = byte;
    for (int bit = 0; bit < 8; ++bit) remainder = remainder >> 1 ^ ((remainder & 1U) != 0 ? 0xEDB88320U : 0U);
    remainders[byte] = remainder;
  }
  return remainders;
}();

/// The CRC-32 of ISO 3309 (that of zip and PNG): any change within 32 bits in a row gives another one.
constexpr std::uint32_t crc32(std::string_view bytes) {
  std::uint32_t remainder = 0xFFFFFFFFU;
  for (const char byte : bytes) {
    remainder = remainder >> 8 ^ kCrc32Remainders[(remainder ^ static_cast<unsigned char>(byte)) & 0xFFU];
  }
  return ~remainder;
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_CRC32_H
