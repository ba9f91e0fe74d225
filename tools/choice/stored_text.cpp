#include "tools/choice/stored_text.h"

#include <unicode/ucnv.h>

#include <algorithm>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"

namespace qzlog_tool {

namespace {

// The longest texts have 2048 UTF-16 units, or as many bytes, each at most three bytes in UTF-8; twice that for line
// breaks that were escaped on top of the limit.
constexpr unsigned kMostBytes = 2 * 3 * 2048;

bool is_ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

StoredTexts::StoredTexts() {
  if (!qz_LOG_LogConfig::IsICUEnabled()) return;
  const char* const name = qz_LOG_LogConfig::GetCodePage();
  code_page_ = name[0] != '\0' ? name : ucnv_getDefaultName();
  if (ucnv_compareNames(code_page_.c_str(), "UTF-8") == 0) code_page_.clear();
  if (!are_utf8()) buffer_ = std::make_unique<char[]>(kMostBytes + 1);
}

std::optional<std::string_view> StoredTexts::utf8(const char* text) {
  const std::string_view stored(text);
  // Code pages that hold lines have ASCII's bytes for its characters.
  if (are_utf8() || is_ascii(stored)) return stored;
  unsigned size = kMostBytes;
  if (qz_LOG_LogEntry::ConvertToUTF8(text, buffer_.get(), size, code_page_.c_str()) == 0) return std::nullopt;
  return std::string_view(buffer_.get(), size);
}

std::string with_stored_line_breaks(std::string_view text) {
  std::string stored;
  for (const char character : text) {
    if (character == '\n') {
      stored += "\\n";
    } else if (character == '\r') {
      stored += "\\r";
    } else {
      stored += character;
    }
  }
  return stored;
}

}  // namespace qzlog_tool
