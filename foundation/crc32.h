#ifndef QZLOG_FOUNDATION_CRC32_H
#define QZLOG_FOUNDATION_CRC32_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qzlog {

/// For crc32, which takes so many bytes at once: the remainders of each byte with 0 to 7 zero bytes behind it.
inline constexpr std::size_t kCrc32Step = 8;
inline constexpr std::array<std::array<std::uint32_t, 256>, kCrc32Step> kCrc32Remainders = [] {
  std::array<std::array<std::uint32_t, 256>, kCrc32Step> remainders{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t remainder = byte;
    for (std::size_t behind = 0; behind < kCrc32Step; ++behind) {
      for (int bit = 0; bit < 8; ++bit) remainder = remainder >> 1 ^ ((remainder & 1U) != 0 ? 0xEDB88320U : 0U);
      remainders[behind][byte] = remainder;
    }
  }
  return remainders;
}();

/// The CRC-32 of ISO 3309 (that of zip and PNG): any change within 32 bits in a row gives another one.
constexpr std::uint32_t crc32(std::string_view bytes) {
  const auto byte_at = [&](std::size_t place) -> std::uint32_t { return static_cast<unsigned char>(bytes[place]); };
  std::uint32_t remainder = 0xFFFFFFFFU;
  for (; bytes.size() >= kCrc32Step; bytes.remove_prefix(kCrc32Step)) {
    std::uint32_t next = 0;
    for (std::size_t i = 0; i < kCrc32Step; ++i) {
      const std::uint32_t carried = i < 4 ? remainder >> 8 * i & 0xFFU : 0;
      next ^= kCrc32Remainders[kCrc32Step - 1 - i][byte_at(i) ^ carried];
    }
    remainder = next;
  }
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    remainder = remainder >> 8 ^ kCrc32Remainders[0][(remainder & 0xFFU) ^ byte_at(i)];
  }
  return ~remainder;
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_CRC32_H
