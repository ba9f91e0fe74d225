// What happens in a program that is started with libqzlog_faults.so preloaded, before its main:
//   QZ_FAULT_PROGRAM=NAME   only in the program of this name; the others run as if nothing were preloaded
//   QZ_FAULT_SERVER=1       it becomes a fork server, see fork_server.h
//   QZ_FAULT_MEMORY=N[+]    its N-th allocation fails, with + every later one too
//   QZ_FAULT_COUNT=FILE     where such programs count their allocations, all in one
//   QZ_FAULT_MARKED=1       counted only between qz_faults_begin() and qz_faults_end(), not from main on
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "tests/faults/fault_marks.h"
#include "tests/faults/fork_server.h"
#include "tests/faults/memory_faults.h"

namespace {

using Main = int (*)(int, char**, char**);

Main g_main = nullptr;

void mark(qz_fault::Mark what) {
  const int errno_before = errno;
  prctl(qz_fault::kMarkOption, what, 0, 0, 0);
  errno = errno_before;
}

bool is_chosen_program() {
  const char* const name = std::getenv("QZ_FAULT_PROGRAM");
  return name == nullptr || std::strcmp(name, program_invocation_short_name) == 0;
}

// In a file that all processes of a run share, or only here.
qz_fault::MemoryCount* make_count() {
  static qz_fault::MemoryCount own;
  const char* const path = std::getenv("QZ_FAULT_COUNT");
  const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (file < 0 || ftruncate(file, sizeof own) != 0) return &own;
  void* const shared = mmap(nullptr, sizeof own, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return shared == MAP_FAILED ? &own : static_cast<qz_fault::MemoryCount*>(shared);
}

// For a run without a server.
void take_memory_fault_from_environment() {
  const char* const text = std::getenv("QZ_FAULT_MEMORY");
  if (text == nullptr) return;
  qz_fault::set_memory_fault({std::atol(text), std::strchr(text, '+') != nullptr}, make_count());
}

int run_with_faults(int argc, char** argv, char** environment) {
  if (is_chosen_program()) {
    const bool marked = std::getenv("QZ_FAULT_MARKED") != nullptr;
    if (std::getenv("QZ_FAULT_SERVER") != nullptr) {
      qz_fault::serve_runs();
    } else {
      take_memory_fault_from_environment();
    }
    if (!marked) qz_fault::count_all_allocations();
    mark(qz_fault::kMainReached);
  }
  return g_main(argc, argv, environment);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

void qz_faults_begin() {
  mark(qz_fault::kFaultsBegin);
  qz_fault::count_allocations_here(true);
}

void qz_faults_end() {
  qz_fault::count_allocations_here(false);
  mark(qz_fault::kFaultsEnd);
}

int __libc_start_main(Main program, int argc, char** argv, int (*init)(int, char**, char**), void (*fini)(),
                      void (*loader_fini)(), void* stack_end) {
  g_main = program;
  using Start = int (*)(Main, int, char**, int (*)(int, char**, char**), void (*)(), void (*)(), void*);
  void* const next = dlsym(RTLD_NEXT, "__libc_start_main");
  Start start = nullptr;
  std::memcpy(&start, &next, sizeof start);
  return start(run_with_faults, argc, argv, init, fini, loader_fini, stack_end);
}
}
#pragma GCC visibility pop
