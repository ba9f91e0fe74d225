#include "tools/system/content_digest.h"

#include <cstdint>

#include "tools/compiler/text/hexadecimal.h"

namespace qzlog_tool {
namespace {

constexpr std::uint64_t kOffsetBasis = 0xCBF29CE484222325;
constexpr std::uint64_t kPrime = 0x100000001B3;

}  // namespace

std::string content_digest(std::string_view content) {
  std::uint64_t hash = kOffsetBasis;
  for (const char character : content) hash = (hash ^ static_cast<unsigned char>(character)) * kPrime;
  return qzlog_compiler::hexadecimal(hash, kContentDigestSize, qzlog_compiler::HexadecimalLetters::kSmall);
}

bool is_content_digest(std::string_view text) {
  return text.size() == kContentDigestSize && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace qzlog_tool
