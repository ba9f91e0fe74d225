#include "tools/catalog/bundle_source.h"

#include <utility>

#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/templates/source_digest.h"

namespace qzlog_catalog {
namespace {

constexpr const char* kStringTable = "STRING_TABLE";
constexpr std::string_view kKeyPunctuation = " \"%&'()*+,-./:;<=>?_";

bool is_alphanumeric(char32_t code) {
  return (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z') || (code >= '0' && code <= '9');
}

bool stands_for_itself(char32_t code) { return code >= 0x20 && code < 0x7F && code != '"' && code != '\\'; }

void append_escape(std::string& out, char32_t code) {
  using qzlog_compiler::hexadecimal;
  out += code < 0x10000 ? "\\u" + hexadecimal(code, 4) : "\\U" + hexadecimal(code, 8);
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

/// genrb looks for each key's place from the first one on, so that only falling keys take a time that grows linearly.
void append_table(std::string& out, const std::string& name, const BundleTable& table) {
  out += "  " + name + " {\n";
  for (auto item = table.rbegin(); item != table.rend(); ++item) {
    out += "    ";
    append_quoted(out, item->first);
    out += " { ";
    append_quoted(out, item->second);
    out += " }\n";
  }
  out += "  }\n";
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

BundleSource bundle_source(std::string name, const std::vector<CatalogText>& texts,
                           const std::vector<CatalogSource>& sources) {
  BundleSource bundle{std::move(name), {}};
  BundleTable& messages = bundle.tables[kStringTable];
  for (const CatalogText& text : texts) messages.emplace(text.id, text.stored);
  for (const CatalogSource& source : sources) bundle.tables[qzlog_tool::kSourceTable].emplace(source.id, source.digest);
  return bundle;
}

BundleSource empty_bundle_source(std::string name) { return {std::move(name), {}}; }

std::string genrb_text(const BundleSource& source) {
  std::string out = source.name + " {\n";
  for (const auto& [name, table] : source.tables) append_table(out, name, table);
  return out += "}\n";
}

}  // namespace qzlog_catalog
