#include "tools/catalog/resource_bundle.h"

#include "tools/compiler/utf8_text.h"

namespace qzlog_catalog {
namespace {

constexpr std::string_view kKeyPunctuation = " \"%&'()*+,-./:;<=>?_";

bool is_alphanumeric(char32_t code) {
  return (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z') || (code >= '0' && code <= '9');
}

bool stands_for_itself(char32_t code) { return code >= 0x20 && code < 0x7F && code != '"' && code != '\\'; }

void append_escape(std::string& out, char32_t code) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  out += code < 0x10000 ? "\\u" : "\\U";
  for (int shift = code < 0x10000 ? 12 : 28; shift >= 0; shift -= 4) out += kDigits[(code >> shift) & 0xFU];
}

/// In quotes, what could mean something to genrb as the code of its character. Only the backslash has to be doubled:
/// genrb takes one that is given by its code for the beginning of an escape.
void append_quoted(std::string& out, std::string_view text) {
  out += '"';
  for (std::size_t at = 0; at < text.size();) {
    const qzlog_compiler::Utf8Character character = qzlog_compiler::decode_utf8(text, at);
    if (character.size == 0) {
      append_escape(out, 0xFFFD);
      ++at;
      continue;
    }
    if (stands_for_itself(character.code)) {
      out += static_cast<char>(character.code);
    } else if (character.code == '\\') {
      out += "\\\\";
    } else {
      append_escape(out, character.code);
    }
    at += character.size;
  }
  out += '"';
}

}  // namespace

bool is_bundle_key(std::string_view id) {
  for (const char character : id) {
    const bool known = is_alphanumeric(static_cast<unsigned char>(character)) ||
                       kKeyPunctuation.find(character) != std::string_view::npos;
    if (!known) return false;
  }
  return !id.empty();
}

std::string bundle_source(std::string_view name, const std::vector<CatalogText>& texts) {
  std::string out(name);
  out += " {\n  STRING_TABLE {\n";
  for (const CatalogText& text : texts) {
    out += "    ";
    append_quoted(out, text.id);
    out += " { ";
    append_quoted(out, text.stored);
    out += " }\n";
  }
  return out += "  }\n}\n";
}

std::string empty_bundle_source(std::string_view name) { return std::string(name) + " {\n}\n"; }

}  // namespace qzlog_catalog
