#include "tools/system/out_of_memory.h"

#include <unistd.h>

#include <new>

#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/signal_delay.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {
namespace {

thread_local int handled = 0;

// Also called for allocations that return null in the end: they do not let the exception out.
void memory_ran_out() {
  if (handled > 0 || SignalDelay::is_active()) throw std::bad_alloc();
  print_out_of_memory();
  ::_exit(kExitCannotRun);
}

void print(std::string_view text) noexcept { write_all(STDERR_FILENO, text.data(), text.size()); }

}  // namespace

// cppcheck-suppress throwInNoexceptFunction
void end_where_memory_runs_out() noexcept { std::set_new_handler(memory_ran_out); }

void print_out_of_memory() noexcept {
  print("qzlog: ");
  print(error_label());
  print(" out of memory\n");
}

MemoryErrors::MemoryErrors() noexcept { ++handled; }
MemoryErrors::~MemoryErrors() { --handled; }

}  // namespace qzlog_tool
