#include "tools/catalog/compiled_bundle.h"

#include <cstddef>
#include <string_view>

#include "message/resource_data.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_catalog {
namespace {

using qzlog::ReadResource;
using qzlog::Resource;
using qzlog::ResourceData;

void append_utf16(std::u16string& out, char32_t code) {
  constexpr char32_t kFirstPair = 0x10000;
  if (code < kFirstPair) {
    out += static_cast<char16_t>(code);
    return;
  }
  out += static_cast<char16_t>(0xD800 + ((code - kFirstPair) >> 10U));
  out += static_cast<char16_t>(0xDC00 + ((code - kFirstPair) & 0x3FFU));
}

/// With the replacement character for each byte that is none of UTF-8, as in what genrb reads.
std::u16string utf16_of(std::string_view text) {
  constexpr char32_t kReplacement = 0xFFFD;
  std::u16string converted;
  for (std::size_t at = 0; at < text.size();) {
    const qzlog_compiler::Utf8Character character = qzlog_compiler::decode_utf8(text, at);
    append_utf16(converted, character.size == 0 ? kReplacement : character.code);
    at += character.size == 0 ? 1 : character.size;
  }
  return converted;
}

/// Whether a table, whose keys are different ones, has as many items as `meant`, and `is_same` for the item that each
/// key of that has. Of a table without items genrb makes an array.
template <typename Meant, typename IsSame>
bool has_all(const ResourceData& data, Resource table, const Meant& meant, const IsSame& is_same) {
  const bool can_be_table = qzlog::is_table(table) || (meant.empty() && qzlog::is_array(table));
  if (!can_be_table || data.items_of(table).count != meant.size()) return false;
  for (const auto& [key, item] : meant) {
    Resource found = 0;
    if (!data.find(table, key, found) || !is_same(found, item)) return false;
  }
  return true;
}

bool has_texts(const ResourceData& data, Resource table, const BundleTable& texts) {
  return has_all(data, table, texts, [&](Resource found, const std::string& text) {
    return qzlog::is_string(found) && data.text_of(found) == utf16_of(text);
  });
}

}  // namespace

bool is_compiled_from(const std::string& file, const BundleSource& source) {
  const ReadResource read = ResourceData::read(file);
  if (read.state != ReadResource::State::kGood || read.data->check() != nullptr) return false;
  if (read.data->bytes_behind() != 0) return false;
  return has_all(*read.data, read.data->root(), source.tables,
                 [&](Resource found, const BundleTable& texts) { return has_texts(*read.data, found, texts); });
}

}  // namespace qzlog_catalog
