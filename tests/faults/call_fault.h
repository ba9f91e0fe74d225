#ifndef QZLOG_TESTS_FAULTS_CALL_FAULT_H
#define QZLOG_TESTS_FAULTS_CALL_FAULT_H

#include <sys/types.h>
#include <sys/user.h>

#include <optional>
#include <string>

#include "tests/faults/call_groups.h"

namespace qz_fault {

/// How the chosen call goes wrong.
struct CallFault {
  int error;      ///< an errno value; 0 for a short transfer
  long nth;       ///< which of the counted calls, from 1; 0 for none
  bool repeated;  ///< every later one of its group too
};

/// A stop at the entry of a system call in a traced thread: what the call is, and how it is made to go wrong.
class StoppedCall {
 public:
  explicit StoppedCall(pid_t thread);

  long number() const { return static_cast<long>(registers_.orig_rax); }
  unsigned long argument(int index) const;

  /// The file that the call is about, for a report: its path, or "DESCRIPTOR PATH", with " for writing" behind it where
  /// the descriptor is open for that.
  std::string subject(Subject subject) const;

  /// The call is not made and returns -`error`. close() is made: Linux gives the descriptor back whatever it returns.
  /// Returns the registers that have to be set when the call ends, if any.
  std::optional<user_regs_struct> fail(int error);

  /// The call transfers about half of what was asked for. Nothing happens when that cannot be: a single byte, or a call
  /// that transfers nothing. Returns the registers, except the result, that have to be set when the call ends, if any.
  std::optional<user_regs_struct> shorten();

 private:
  std::optional<user_regs_struct> shorten_vector();
  std::string path_in_folder(unsigned long folder, unsigned long path) const;
  std::string text_at(unsigned long address) const;
  std::string file_of_descriptor(unsigned long descriptor) const;
  void write_registers() const;

  pid_t thread_;
  user_regs_struct registers_;
};

}  // namespace qz_fault

#endif  // QZLOG_TESTS_FAULTS_CALL_FAULT_H
