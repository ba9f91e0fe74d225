#include "lines/text_encoder.h"

#include <cstring>

#include "lines/stored_code_page.h"
#include "message/code_page.h"

namespace qzlog {

void TextEncoder::update() {
  const char* const name = stored_code_page_name();
  if (std::strcmp(name_.c_str(), name) == 0) return;
  name_ = name;
  is_utf8_ = qzlog::is_utf8(name);
}

bool TextEncoder::convert(std::string_view& text) {
  const icu::UnicodeString decoded = decode_text(text.data(), "UTF8");
  if (decoded.isBogus() || !encode_text(decoded, name_.c_str(), converted_)) return false;
  text = converted_;
  // A code page that puts zero bytes into texts has none that an entry could keep.
  return text.find('\0') == std::string_view::npos;
}

}  // namespace qzlog
