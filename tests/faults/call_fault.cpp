#include "tests/faults/call_fault.h"

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>

namespace qz_fault {

namespace {

// What a leaf function keeps below the stack pointer.
constexpr unsigned long kRedZone = 128;

void check(long result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
}

bool is_vector_call(long number) {
  return number == SYS_readv || number == SYS_writev || number == SYS_preadv || number == SYS_pwritev;
}

// By the flags in a file of /proc/PID/fdinfo, which are octal.
bool is_for_writing(const std::string& path) {
  std::ifstream info(path);
  for (std::string word; info >> word;) {
    if (word == "flags:" && info >> word) return (std::stoul(word, nullptr, 8) & O_ACCMODE) != O_RDONLY;
  }
  return false;
}

bool is_transfer(long number) {
  return number == SYS_read || number == SYS_write || number == SYS_pread64 || number == SYS_pwrite64;
}

}  // namespace

StoppedCall::StoppedCall(pid_t thread) : thread_(thread), registers_{} {
  check(ptrace(PTRACE_GETREGS, thread_, nullptr, &registers_), "PTRACE_GETREGS");
}

void StoppedCall::write_registers() const {
  user_regs_struct registers = registers_;
  check(ptrace(PTRACE_SETREGS, thread_, nullptr, &registers), "PTRACE_SETREGS");
}

unsigned long StoppedCall::argument(int index) const {
  const unsigned long long arguments[] = {registers_.rdi, registers_.rsi, registers_.rdx,
                                          registers_.r10, registers_.r8,  registers_.r9};
  return arguments[index];
}

std::optional<user_regs_struct> StoppedCall::fail(int error) {
  if (number() == SYS_close) {
    user_regs_struct at_end = registers_;
    at_end.rax = static_cast<unsigned long long>(-static_cast<long long>(error));
    return at_end;
  }
  registers_.orig_rax = ~0ULL;
  registers_.rax = static_cast<unsigned long long>(-static_cast<long long>(error));
  write_registers();
  return std::nullopt;
}

std::optional<user_regs_struct> StoppedCall::shorten() {
  if (is_vector_call(number())) return shorten_vector();
  if (!is_transfer(number()) || registers_.rdx < 2) return std::nullopt;
  const user_regs_struct at_end = registers_;
  registers_.rdx /= 2;
  write_registers();
  return at_end;
}

// The first part alone is transferred that holds anything, and half of that; the list of it stands below the stack.
std::optional<user_regs_struct> StoppedCall::shorten_vector() {
  const user_regs_struct at_end = registers_;
  iovec part{};
  iovec local{&part, sizeof part};
  for (unsigned long index = 0; index < at_end.rdx; ++index) {
    iovec remote{reinterpret_cast<void*>(at_end.rsi + index * sizeof part), sizeof part};
    if (process_vm_readv(thread_, &local, 1, &remote, 1, 0) != sizeof part) return std::nullopt;
    if (part.iov_len < 2) continue;
    part.iov_len /= 2;
    registers_.rsi = (at_end.rsp - kRedZone - sizeof part) & ~0xFULL;
    registers_.rdx = 1;
    remote.iov_base = reinterpret_cast<void*>(registers_.rsi);
    if (process_vm_writev(thread_, &local, 1, &remote, 1, 0) != sizeof part) return std::nullopt;
    write_registers();
    return at_end;
  }
  return std::nullopt;
}

std::string StoppedCall::subject(Subject subject) const {
  switch (subject) {
    case Subject::kDescriptor:
      return file_of_descriptor(argument(0));
    case Subject::kPath:
      return text_at(argument(0));
    case Subject::kPathAt:
      return path_in_folder(argument(0), argument(1));
    case Subject::kNone:
      break;
  }
  return "";
}

// Without a path the call is about the descriptor itself.
std::string StoppedCall::path_in_folder(unsigned long folder, unsigned long path) const {
  const std::string name = text_at(path);
  if (name.empty()) return file_of_descriptor(folder);
  if (name.front() == '/' || static_cast<int>(folder) == AT_FDCWD) return name;
  const std::string file = file_of_descriptor(folder);
  return file.substr(file.find(' ') + 1) + "/" + name;
}

// Page by page: what lies behind the end of the text may not be readable.
std::string StoppedCall::text_at(unsigned long address) const {
  constexpr unsigned long kPage = 4096;
  std::string text;
  while (text.size() < kPage) {
    char bytes[kPage];
    iovec local{bytes, sizeof bytes};
    iovec remote{reinterpret_cast<void*>(address), kPage - address % kPage};
    const ssize_t got = process_vm_readv(thread_, &local, 1, &remote, 1, 0);
    if (got <= 0) break;
    const std::size_t length = strnlen(bytes, static_cast<std::size_t>(got));
    text.append(bytes, length);
    if (length < static_cast<std::size_t>(got)) break;
    address += length;
  }
  return text;
}

std::string StoppedCall::file_of_descriptor(unsigned long descriptor) const {
  const std::string number = std::to_string(static_cast<int>(descriptor));
  const std::string process = "/proc/" + std::to_string(thread_);
  char target[256];
  const ssize_t length = readlink((process + "/fd/" + number).c_str(), target, sizeof target);
  if (length <= 0) return number;
  const std::string file = number + " " + std::string(target, static_cast<std::size_t>(length));
  return is_for_writing(process + "/fdinfo/" + number) ? file + " for writing" : file;
}

}  // namespace qz_fault
