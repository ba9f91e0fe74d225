#ifndef QZLOG_MESSAGE_RESOURCE_TEXT_H
#define QZLOG_MESSAGE_RESOURCE_TEXT_H

#include <string>
#include <string_view>

namespace qzlog {

/// A name or a path that a bundle holds as a text. Those are ASCII; empty for everything else. Throws std::bad_alloc.
inline std::string ascii_of(std::u16string_view text) {
  constexpr char16_t kFirstOther = 0x80;
  std::string ascii;
  for (const char16_t unit : text) {
    if (unit == 0 || unit >= kFirstOther) return {};
    ascii += static_cast<char>(unit);
  }
  return ascii;
}

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_TEXT_H
