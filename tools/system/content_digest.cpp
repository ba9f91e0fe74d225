#include "tools/system/content_digest.h"

#include <cstdint>

namespace qzlog_tool {
namespace {

constexpr std::uint64_t kOffsetBasis = 0xCBF29CE484222325;
constexpr std::uint64_t kPrime = 0x100000001B3;
constexpr std::string_view kDigits = "0123456789abcdef";

}  // namespace

std::string content_digest(std::string_view content) {
  std::uint64_t hash = kOffsetBasis;
  for (const char character : content) hash = (hash ^ static_cast<unsigned char>(character)) * kPrime;
  std::string digits(kContentDigestSize, '0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4) *digit = kDigits[hash & 0xF];
  return digits;
}

bool is_content_digest(std::string_view text) {
  return text.size() == kContentDigestSize && text.find_first_not_of(kDigits) == std::string_view::npos;
}

}  // namespace qzlog_tool
