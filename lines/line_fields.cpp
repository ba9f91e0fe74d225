#include "lines/line_fields.h"

#include "lines/utf8_text.h"

namespace qzlog {

const char* c_text(std::string_view text, std::size_t place) {
  if (text.find('\0') != std::string_view::npos) {
    throw LineFault{LineRule::kNulCharacter, "the text " + quoted(text) + " holds U+0000, which no text can", place};
  }
  return text.data();
}

}  // namespace qzlog
