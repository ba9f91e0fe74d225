#ifndef QZLOG_LINES_LIBRARY_TEXT_H
#define QZLOG_LINES_LIBRARY_TEXT_H

#include <cxxabi.h>

#include <string>
#include <string_view>
#include <typeinfo>

#include "lines/utf8_text.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

/// What failures are that have no text. To be called where the exception was caught.
inline std::string text_of_caught_class() {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  const bool is_index = type != nullptr && *type == typeid(QZX_index_out_of_bounds);
  return is_index ? "a percent sign ends the message's template" : "out of memory";
}

/// The library's own text for a failure that was caught, in one line that is safe to show. It can hold names from a
/// file that nobody has looked at.
inline std::string library_text(const qz_EXCEPTION_base& failure) {
  if (failure.get_message() == nullptr) return text_of_caught_class();
  std::string_view text = failure.get_message();
  while (text.ends_with('\n')) text.remove_suffix(1);
  return printable(text);
}

}  // namespace qzlog

#endif  // QZLOG_LINES_LIBRARY_TEXT_H
