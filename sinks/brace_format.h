#ifndef QZLOG_SINKS_BRACE_FORMAT_H
#define QZLOG_SINKS_BRACE_FORMAT_H

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace qzlog {

/// Cuts a format such as "{time} {level}: {message}" into its parts and hands them to `parts`, in their order, each
/// with the place where it begins: parts.take_text(text, place) for texts, "{{" and "}}" as one brace each;
/// parts.take_field(name, place) for what stands between braces, which may be empty; parts.refuse(place, reason), which
/// has to throw, for a brace that has no other.
template <class Parts>
void split_format(std::string_view format, Parts& parts) {
  for (std::size_t at = 0; at < format.size();) {
    const std::size_t brace = std::min(format.find_first_of("{}", at), format.size());
    if (brace > at) parts.take_text(format.substr(at, brace - at), at);
    if (brace == format.size()) return;
    at = brace + 2;
    if (format.substr(brace + 1, 1) == format.substr(brace, 1)) {
      parts.take_text(format.substr(brace, 1), brace);
      continue;
    }
    if (format[brace] == '}') parts.refuse(brace, "'}' without '{' (write '}}' for the character)");
    const std::size_t end = format.find('}', brace);
    if (end == std::string_view::npos) parts.refuse(brace, "'{' without '}' (write '{{' for the character)");
    parts.take_field(format.substr(brace + 1, end - brace - 1), brace);
    at = end + 1;
  }
}

}  // namespace qzlog

#endif  // QZLOG_SINKS_BRACE_FORMAT_H
