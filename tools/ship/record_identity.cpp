#include "tools/ship/record_identity.h"

#include <algorithm>
#include <charconv>

#include "foundation/sha256.h"
#include "tools/compiler/text/hexadecimal.h"

namespace qzlog_tool {

namespace {

bool is_plain(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte > ' ' && byte < 0x7F && character != '%';
}

void append_escaped(std::string_view text, std::string& target) {
  if (std::all_of(text.begin(), text.end(), is_plain)) {
    target += text;
    return;
  }
  for (const char character : text) {
    if (is_plain(character)) {
      target += character;
    } else {
      target += '%' + qzlog_compiler::hexadecimal(static_cast<unsigned char>(character), 2);
    }
  }
}

void append_number(std::uint64_t number, std::string& target) {
  char digits[20];
  target.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void append_digest(std::string_view line, std::string& target) {
  qzlog::Sha256 sha;
  sha.add(line.data(), line.size());
  char digits[qzlog::kShortDigestDigits];
  qzlog::write_short_digest(sha.digest(), digits);
  target.append(digits, sizeof digits);
}

}  // namespace

// The digest and the offset alone would be those of other logs too: of the first line of each, if all begin alike.
void RecordIdentity::write(std::string_view line, const LineParts& parts, const LineStart& place,
                           std::string& identity) const {
  identity.clear();
  if (parts.has_identity) {
    append_escaped(parts.writer, identity);
    identity += '/';
    append_number(parts.seq, identity);
    return;
  }
  append_escaped(host_, identity);
  if (!place.file.starts_with('/')) identity += '/';
  append_escaped(place.file, identity);
  identity += '@';
  append_number(place.offset, identity);
  identity += '#';
  append_digest(line, identity);
}

}  // namespace qzlog_tool
