#include "foundation/sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qzlog {

namespace {

constexpr std::size_t kRounds = 64;

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, kRounds> kRoundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t read_big_endian(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

/// The most significant byte first.
template <typename Number>
void write_big_endian(Number number, unsigned char* bytes) {
  for (std::size_t i = sizeof(Number); i-- > 0; number >>= 8) bytes[i] = static_cast<unsigned char>(number);
}

std::array<std::uint32_t, kRounds> message_schedule(const unsigned char* block) {
  std::array<std::uint32_t, kRounds> words;
  for (std::size_t i = 0; i < 16; ++i) words[i] = read_big_endian(block + 4 * i);
  for (std::size_t i = 16; i < kRounds; ++i) {
    const std::uint32_t before = words[i - 15];
    const std::uint32_t shortly_before = words[i - 2];
    const std::uint32_t sigma_0 = std::rotr(before, 7) ^ std::rotr(before, 18) ^ (before >> 3);
    const std::uint32_t sigma_1 =
        std::rotr(shortly_before, 17) ^ std::rotr(shortly_before, 19) ^ (shortly_before >> 10);
    words[i] = words[i - 16] + sigma_0 + words[i - 7] + sigma_1;
  }
  return words;
}

}  // namespace

void Sha256::take_block(const unsigned char* block) noexcept {
  const std::array<std::uint32_t, kRounds> words = message_schedule(block);
  auto [a, b, c, d, e, f, g, h] = state_;
  for (std::size_t i = 0; i < kRounds; ++i) {
    const std::uint32_t sum_1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const std::uint32_t choice = (e & f) ^ (~e & g);
    const std::uint32_t first = h + sum_1 + choice + kRoundConstants[i] + words[i];
    const std::uint32_t sum_0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const std::uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + sum_0 + majority;
  }
  const std::array<std::uint32_t, 8> rounds = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state_.size(); ++i) state_[i] += rounds[i];
}

void Sha256::add(const void* bytes, std::size_t count) noexcept {
  const auto* at = static_cast<const unsigned char*>(bytes);
  const std::size_t kept = length_bytes_ % kBlockBytes;
  length_bytes_ += count;
  if (kept != 0) {
    const std::size_t taken = std::min(count, kBlockBytes - kept);
    std::copy_n(at, taken, rest_.begin() + static_cast<std::ptrdiff_t>(kept));
    at += taken;
    count -= taken;
    if (kept + taken < kBlockBytes) return;
    take_block(rest_.data());
  }
  for (; count >= kBlockBytes; at += kBlockBytes, count -= kBlockBytes) take_block(at);
  std::copy_n(at, count, rest_.begin());
}

Sha256::Digest Sha256::digest() const noexcept {
  // A bit that is set, zeros up to the end of a block but for eight bytes, and there the length in bits.
  static constexpr unsigned char kPadding[kBlockBytes] = {0x80};
  Sha256 padded = *this;
  unsigned char length_bits[kLengthBytes];
  write_big_endian(length_bytes_ * 8, length_bits);
  const std::size_t kept = length_bytes_ % kBlockBytes;
  const bool fits = kept < kBlockBytes - kLengthBytes;
  padded.add(kPadding, (fits ? kBlockBytes : 2 * kBlockBytes) - kLengthBytes - kept);
  padded.add(length_bits, kLengthBytes);
  Digest result;
  for (std::size_t i = 0; i < padded.state_.size(); ++i) write_big_endian(padded.state_[i], result.data() + 4 * i);
  return result;
}

void write_short_digest(const Sha256::Digest& digest, char* target) noexcept {
  static constexpr char kDigits[] = "0123456789abcdef";
  for (std::size_t i = 0; i < kShortDigestDigits; ++i) {
    const unsigned byte = digest[i / 2];
    target[i] = kDigits[i % 2 == 0 ? byte >> 4 : byte & 0xFU];
  }
}

}  // namespace qzlog
