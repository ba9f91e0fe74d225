#ifndef QZLOG_TOOLS_SYSTEM_COMMAND_ERROR_H
#define QZLOG_TOOLS_SYSTEM_COMMAND_ERROR_H

#include <stdexcept>
#include <string>

namespace qzlog_tool {

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFindings = 1;    ///< findings or bad input
inline constexpr int kExitCannotRun = 2;   ///< wrong usage, or a file that cannot be read or written
inline constexpr int kExitReaderGone = 1;  ///< nobody reads standard output any more

/// Ends a command: the text goes to stderr (nothing does when it is empty), the status to the shell.
class CommandError : public std::runtime_error {
 public:
  CommandError(int exit_status, const std::string& text) : std::runtime_error(text), exit_status_(exit_status) {}

  int exit_status() const noexcept { return exit_status_; }

 private:
  int exit_status_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_COMMAND_ERROR_H
