#ifndef QZLOG_LINES_LIBRARY_TEXT_H
#define QZLOG_LINES_LIBRARY_TEXT_H

#include <string>
#include <string_view>

#include "lines/utf8_text.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

/// The library's own text for a failure, in one line that is safe to show. It can hold names from a file that nobody
/// has looked at.
inline std::string library_text(const qz_EXCEPTION_base& failure) {
  if (failure.get_message() == nullptr) return "out of memory";  // which alone has no text
  std::string_view text = failure.get_message();
  while (text.ends_with('\n')) text.remove_suffix(1);
  return printable(text);
}

}  // namespace qzlog

#endif  // QZLOG_LINES_LIBRARY_TEXT_H
