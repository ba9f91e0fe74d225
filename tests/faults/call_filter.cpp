#include "tests/faults/call_filter.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cstddef>

namespace qz_fault {

namespace {

sock_filter statement(unsigned code, unsigned value) { return {static_cast<unsigned short>(code), 0, 0, value}; }

// Stops at the call of this number; goes on with the next instruction but one otherwise.
void append_stop(std::vector<sock_filter>& program, long number) {
  program.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<unsigned>(number)});
  program.push_back(statement(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
}

}  // namespace

bool stop_at_calls(const std::vector<const CallGroup*>& groups) {
  std::vector<sock_filter> program = {
      statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
      {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, AUDIT_ARCH_X86_64},
      statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
  };
  append_stop(program, SYS_prctl);
  for (const CallGroup* const group : groups) {
    for (const long number : group->numbers) append_stop(program, number);
  }
  program.push_back(statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter, 0, 0) == 0;
}

}  // namespace qz_fault
