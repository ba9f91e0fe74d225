#ifndef QZLOG_TOOLS_REPORT_LIBRARY_TEXT_H
#define QZLOG_TOOLS_REPORT_LIBRARY_TEXT_H

#include <string>
#include <string_view>

#include "qzlog/qz_exception.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

/// The library's own text for a failure, in one line. It can hold names from a file that nobody has looked at.
inline std::string library_text(const qz_EXCEPTION_base& failure) {
  if (failure.get_message() == nullptr) return "out of memory";  // which alone has no text
  std::string_view text = failure.get_message();
  while (text.ends_with('\n')) text.remove_suffix(1);
  return qzlog_compiler::printable(text);
}

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_LIBRARY_TEXT_H
