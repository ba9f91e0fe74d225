#ifndef QZLOG_TESTS_TOOLS_SHOWN_LINE_H
#define QZLOG_TESTS_TOOLS_SHOWN_LINE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qzlog_test {

/// How a finding shows the line that it is about, at a column from 1 or, with 0, as a whole.
inline std::string shown_line(std::uint64_t number, const std::string& line, std::size_t column = 0) {
  const std::string digits = std::to_string(number);
  const std::string caret = std::string(column != 0 ? column - 1 : line.find_first_not_of(' '), ' ') + '^';
  return std::string(5 - digits.size(), ' ') + digits + " | " + line + "\n      | " + caret + '\n';
}

/// How the command says at its end that it passed over a line, for the reason `rule`.
inline std::string one_line_passed_over(const std::string& rule, const std::string& place) {
  return "qzlog: error: 1 line passed over (1 " + rule + "); the first at " + place + '\n';
}

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_SHOWN_LINE_H
