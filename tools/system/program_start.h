#ifndef QZLOG_TOOLS_SYSTEM_PROGRAM_START_H
#define QZLOG_TOOLS_SYSTEM_PROGRAM_START_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace qzlog_tool {

/// Throws CommandError (cannot run): "cannot run 'git': No such file or directory", and `hint`.
[[noreturn]] void refuse_to_start(const std::string& program, int error, const std::string& hint = "");

/// Starts a program, found through PATH, with its arguments as they stand, and leaves it to the caller to wait for it.
/// Its standard input is empty, its standard output and error are these descriptors; `variables` ("NAME=VALUE") come
/// before those of the environment. It gets the signal mask that this process had before delays. Throws CommandError
/// (cannot run) when it cannot be started; `hint` stands at the end of its text where there is no such program.
pid_t start_program(std::vector<std::string> arguments, std::vector<std::string> variables, int output, int errors,
                    const std::string& hint = "");

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_PROGRAM_START_H
