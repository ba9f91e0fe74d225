#include "lines/base64_decode.h"

#include <array>
#include <cstdint>

namespace qzlog {
namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNone = 0xFF;

constexpr std::array<std::uint8_t, 256> make_values() {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNone);
  for (std::size_t digit = 0; digit < kDigits.size(); ++digit) {
    values[static_cast<unsigned char>(kDigits[digit])] = static_cast<std::uint8_t>(digit);
  }
  return values;
}
constexpr std::array<std::uint8_t, 256> kValues = make_values();

}  // namespace

bool decode_base64(std::string_view text, std::string& bytes) {
  bytes.clear();
  if (text.size() % 4 != 0) return false;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  text.remove_suffix(padding);
  std::uint32_t bits = 0;
  unsigned count = 0;
  for (const char digit : text) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(digit)];
    if (value == kNone) return false;
    bits = bits << 6 | value;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count);
    bits &= (1U << count) - 1;
  }
  return bits == 0;
}

}  // namespace qzlog
