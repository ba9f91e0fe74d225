#ifndef QZLOG_TOOLS_SYSTEM_CHILD_PROCESS_H
#define QZLOG_TOOLS_SYSTEM_CHILD_PROCESS_H

#include <functional>
#include <string>
#include <vector>

namespace qzlog_tool {

struct ProgramResult {
  int status = 0;  ///< the exit status, or 128 and the signal that ended the program
  std::string output;
};

enum class ProgramErrors { kToOurs, kWithOutput };

/// Runs a program, found through PATH, with its arguments as they stand: no shell sees them. Its standard input is
/// empty; `errors` says where its standard error goes when it has ended; `variables` ("NAME=VALUE") come before those
/// of the environment. A signal that ends this process ends the program first. Throws CommandError (cannot run) when it
/// cannot be started.
ProgramResult run_program(std::vector<std::string> program_and_arguments, ProgramErrors errors = ProgramErrors::kToOurs,
                          std::vector<std::string> variables = {});

/// Runs `work` in a copy of this process and returns what it returns, or 128 and the signal that ended the copy: for
/// what may end its process. What `work` changes in memory stays there. It must not throw; where memory runs out it
/// gets std::bad_alloc. Throws CommandError (cannot run) when there can be no copy. `name` is what error texts call it.
int run_apart(const std::string& name, const std::function<int()>& work);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_CHILD_PROCESS_H
