#ifndef QZLOG_TOOLS_CHILD_PROCESS_H
#define QZLOG_TOOLS_CHILD_PROCESS_H

#include <string>
#include <vector>

namespace qzlog_tool {

struct ProgramResult {
  int status = 0;  ///< the exit status, or 128 and the signal that ended the program
  std::string output;
};

/// Runs a program, found through PATH, with its arguments as they stand: no shell sees them. Its standard input is
/// empty and its standard error ours. Throws CommandError (cannot run) when it cannot be started.
ProgramResult run_program(std::vector<std::string> program_and_arguments);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHILD_PROCESS_H
