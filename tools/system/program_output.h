#ifndef QZLOG_TOOLS_SYSTEM_PROGRAM_OUTPUT_H
#define QZLOG_TOOLS_SYSTEM_PROGRAM_OUTPUT_H

#include <sys/types.h>

#include <csignal>
#include <cstddef>
#include <string>
#include <vector>

#include "tools/system/file_descriptor.h"
#include "tools/system/memory_file.h"

namespace qzlog_tool {

/// The standard output of a program that runs beside us, read as it comes. For the only thread of a process.
class ProgramOutput {
 public:
  /// Starts the program, found through PATH, with its arguments as they stand. Throws CommandError (cannot run);
  /// `hint` stands at the end of its text where the program is not there.
  explicit ProgramOutput(std::vector<std::string> program_and_arguments, const std::string& hint = "");
  /// A program that still runs is ended.
  ~ProgramOutput();
  ProgramOutput(const ProgramOutput&) = delete;
  ProgramOutput& operator=(const ProgramOutput&) = delete;

  /// Up to `size` bytes, waiting for the first; 0 at the end, when the program has ended with the status 0. Throws
  /// CommandError (cannot run), with what the program wrote to its standard error, when it ended in another way.
  std::size_t read(char* buffer, std::size_t size);

 private:
  /// Has ended programs wait to be asked for, whatever our own parent has told us to do.
  class EndNotice {
   public:
    EndNotice();
    EndNotice(const EndNotice&) = delete;
    EndNotice& operator=(const EndNotice&) = delete;
    ~EndNotice();

   private:
    struct sigaction before_ = {};
  };

  void check_end();
  int wait() noexcept;

  const EndNotice notice_;
  const std::string program_;
  const MemoryFile errors_;
  FileDescriptor output_;
  pid_t process_;  // -1: it has ended
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_PROGRAM_OUTPUT_H
