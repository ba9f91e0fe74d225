#include "lines/text_code_page.h"

#include "message/code_page.h"
#include "qzlog/logcfg.h"

namespace qzlog {

void TextCodePage::update() {
  const char* const name = qz_LOG_LogConfig::IsICUEnabled() ? qz_LOG_LogConfig::GetCodePage() : "UTF-8";
  if (name_ == name) return;
  name_ = name;
  is_utf8_ = qzlog::is_utf8(name);
}

bool TextCodePage::convert(std::string_view& text) {
  const icu::UnicodeString decoded = decode_text(text.data(), "UTF8");
  if (decoded.isBogus() || !encode_text(decoded, name_.c_str(), converted_)) return false;
  text = converted_;
  // A code page that puts zero bytes into texts has none that an entry could keep.
  return text.find('\0') == std::string_view::npos;
}

}  // namespace qzlog
