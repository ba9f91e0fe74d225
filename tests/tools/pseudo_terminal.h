#ifndef QZLOG_TESTS_TOOLS_PSEUDO_TERMINAL_H
#define QZLOG_TESTS_TOOLS_PSEUDO_TERMINAL_H

#include <string>

namespace qzlog_test {

/// What a terminal was given.
struct TerminalRun {
  int status = -1;    ///< 128 + the signal where one ended the command
  std::string shown;  ///< every byte
};

/// Runs a line of shell in `folder` with a new terminal as standard output and standard error.
TerminalRun run_on_terminal(const std::string& folder, const std::string& shell_line, unsigned short columns = 80);

/// The first place that a terminal must not get: controls but those that move to the next line or column, characters of
/// C1 and those that turn the direction of writing. Empty where there is none.
std::string first_unsafe_place(const std::string& text);

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_PSEUDO_TERMINAL_H
