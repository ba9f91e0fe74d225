#ifndef QZLOG_FOUNDATION_SHA256_H
#define QZLOG_FOUNDATION_SHA256_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace qzlog {

/// SHA-256 (FIPS 180-4) of bytes that are given in pieces of any size. A value type; takes no memory and never throws.
class Sha256 {
 public:
  static constexpr std::size_t kDigestBytes = 32;
  using Digest = std::array<unsigned char, kDigestBytes>;

  void add(const void* bytes, std::size_t count) noexcept;
  /// Of all that was added. More may be added afterwards.
  Digest digest() const noexcept;

 private:
  static constexpr std::size_t kBlockBytes = 64;
  static constexpr std::size_t kLengthBytes = 8;

  void take_block(const unsigned char* block) noexcept;

  std::array<std::uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                         0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::uint64_t length_bytes_ = 0;
  std::array<unsigned char, kBlockBytes> rest_ = {};  // of them the last length_bytes_ % kBlockBytes that were added
};

/// How many hexadecimal digits of a digest stand for something: unlike enough to tell things apart.
inline constexpr std::size_t kShortDigestDigits = 16;

/// Writes the first kShortDigestDigits digits, in small letters and without a terminator.
void write_short_digest(const Sha256::Digest& digest, char* target) noexcept;

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_SHA256_H
