#include "sinks/journal_names.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "foundation/sha256.h"

namespace qzlog {

namespace {

constexpr std::string_view kPrefix = "QZ_";
constexpr std::size_t kMostName = 64;
constexpr std::size_t kLongestNamespace = 64;

bool is_of_namespace(char character) {
  const bool is_letter = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
  const bool is_digit = character >= '0' && character <= '9';
  return is_letter || is_digit || std::string_view(":-_.@").find(character) != std::string_view::npos;
}

char field_character(char character) {
  if (character >= 'a' && character <= 'z') return static_cast<char>(character - 'a' + 'A');
  const bool stays = (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9');
  return stays ? character : '_';
}

}  // namespace

bool is_journal_namespace(std::string_view name) {
  return !name.empty() && name.size() <= kLongestNamespace && std::all_of(name.begin(), name.end(), is_of_namespace);
}

void write_journal_message_id(std::string_view product, unsigned id, char* target) noexcept {
  char digits[std::numeric_limits<unsigned>::digits10 + 1];
  const char* const end = std::to_chars(digits, digits + sizeof digits, id).ptr;
  Sha256 hash;
  hash.add(product.data(), product.size());
  hash.add("/", 1);
  hash.add(digits, static_cast<std::size_t>(end - digits));
  const Sha256::Digest digest = hash.digest();
  for (std::size_t i = 0; i < kJournalMessageIdDigits / 2; ++i) {
    constexpr const char* kDigits = "0123456789abcdef";
    target[2 * i] = kDigits[digest[i] >> 4];
    target[2 * i + 1] = kDigits[digest[i] & 15];
  }
}

void append_journal_field_name(std::string_view attribute, std::string& out) {
  out += kPrefix;
  const std::size_t begin = out.size();
  out += attribute.substr(0, kMostName - kPrefix.size());
  std::transform(out.begin() + static_cast<std::ptrdiff_t>(begin), out.end(),
                 out.begin() + static_cast<std::ptrdiff_t>(begin), field_character);
}

}  // namespace qzlog
