#ifndef QZLOG_LINES_JSON_CHECK_H
#define QZLOG_LINES_JSON_CHECK_H

#include <cstddef>
#include <string_view>

namespace qzlog {

/// Why a text is no JSON.
struct JsonFault {
  const char* reason;
  std::size_t place;        ///< of the byte, counted from 0
  bool ends_early = false;  ///< the text may be the beginning of JSON
};

/// Arrays and objects within each other.
inline constexpr unsigned kMaximumJsonDepth = 1024;

/// Whether `text` is one JSON value and nothing else but blanks, as RFC 8259 has it: in UTF-8, without a byte order
/// mark. What is within its rules and cannot be kept is no JSON either: integers of more than 64 bits, numbers that no
/// double comes near to, halves of surrogate pairs, nesting deeper than kMaximumJsonDepth. Takes no memory.
bool check_json(std::string_view text, JsonFault& fault);

}  // namespace qzlog

#endif  // QZLOG_LINES_JSON_CHECK_H
