#include "tests/faults/call_groups.h"

#include <sys/syscall.h>

#include <sstream>
#include <stdexcept>

namespace qz_fault {

const std::vector<CallGroup>& call_groups() {
  static const std::vector<CallGroup> groups = {
      {"open", Subject::kPathAt, {SYS_openat, SYS_openat2}},
      {"open", Subject::kPath, {SYS_open, SYS_creat}},
      {"read", Subject::kDescriptor, {SYS_read, SYS_pread64, SYS_readv, SYS_preadv}},
      {"write", Subject::kDescriptor, {SYS_write, SYS_pwrite64, SYS_writev, SYS_pwritev}},
      {"fsync", Subject::kDescriptor, {SYS_fsync, SYS_fdatasync}},
      {"close", Subject::kDescriptor, {SYS_close}},
      {"lseek", Subject::kDescriptor, {SYS_lseek}},
      {"ftruncate", Subject::kDescriptor, {SYS_ftruncate}},
      {"stat", Subject::kPathAt, {SYS_newfstatat, SYS_statx}},
      {"stat", Subject::kDescriptor, {SYS_fstat}},
      {"stat", Subject::kPath, {SYS_stat, SYS_lstat}},
      {"access", Subject::kPath, {SYS_access}},
      {"access", Subject::kPathAt, {SYS_faccessat, SYS_faccessat2}},
      {"rename", Subject::kPath, {SYS_rename}},
      {"rename", Subject::kPathAt, {SYS_renameat, SYS_renameat2}},
      {"unlink", Subject::kPath, {SYS_unlink, SYS_rmdir}},
      {"unlink", Subject::kPathAt, {SYS_unlinkat}},
      {"mkdir", Subject::kPath, {SYS_mkdir}},
      {"mkdir", Subject::kPathAt, {SYS_mkdirat}},
      {"link", Subject::kPath, {SYS_link}},
      {"link", Subject::kPathAt, {SYS_linkat}},
      {"chmod", Subject::kDescriptor, {SYS_fchmod, SYS_fchown}},
      {"getdents", Subject::kDescriptor, {SYS_getdents64}},
      {"lock", Subject::kDescriptor, {SYS_flock}},
      {"memfd", Subject::kPath, {SYS_memfd_create}},
      {"mmap", Subject::kNone, {SYS_mmap}},
      {"pipe", Subject::kNone, {SYS_pipe, SYS_pipe2}},
      {"dup", Subject::kDescriptor, {SYS_dup, SYS_dup2, SYS_dup3}},
      {"fork", Subject::kNone, {SYS_fork, SYS_vfork, SYS_clone, SYS_clone3}},
      {"exec", Subject::kPath, {SYS_execve}},
      {"wait", Subject::kNone, {SYS_wait4, SYS_waitid}},
  };
  return groups;
}

std::vector<const CallGroup*> find_call_groups(const std::string& names) {
  std::vector<const CallGroup*> found;
  std::istringstream list(names);
  for (std::string name; std::getline(list, name, ',');) {
    const std::size_t before = found.size();
    for (const CallGroup& group : call_groups()) {
      if (group.name == name) found.push_back(&group);
    }
    if (found.size() == before) throw std::invalid_argument("no such group of calls: " + name);
  }
  return found;
}

}  // namespace qz_fault
