#ifndef QZLOG_TOOLS_SYSTEM_OUT_OF_MEMORY_H
#define QZLOG_TOOLS_SYSTEM_OUT_OF_MEMORY_H

namespace qzlog_tool {

/// To be called before anything that takes memory. From then on the process ends where memory runs out, with
/// print_out_of_memory and the status for what cannot be run: libraries that are not ours go on without a part of their
/// result then, or crash when they take back what they have begun. std::bad_alloc is thrown as ever while a SignalDelay
/// lives, so that nothing half done stays behind, or a MemoryErrors.
void end_where_memory_runs_out() noexcept;

/// Says on stderr, without taking memory, that there is none.
void print_out_of_memory() noexcept;

/// Lives where std::bad_alloc is part of this thread's work: it is an error of the item at hand, or of the whole.
class MemoryErrors {
 public:
  MemoryErrors() noexcept;
  MemoryErrors(const MemoryErrors&) = delete;
  MemoryErrors& operator=(const MemoryErrors&) = delete;
  ~MemoryErrors();
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_OUT_OF_MEMORY_H
