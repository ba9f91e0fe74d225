#ifndef QZLOG_TESTS_FAULTS_MEMORY_FAULTS_H
#define QZLOG_TESTS_FAULTS_MEMORY_FAULTS_H

namespace qz_fault {

/// What is counted, in memory that the fork server shares with its children.
struct MemoryCount {
  long allocations;  ///< asked for while counting was on
  long failed;       ///< refused
};

/// What fails: the `nth` allocation (from 1; 0 for none), and with `from_then_on` every later one.
struct MemoryFault {
  long nth;
  bool from_then_on;
};

/// `count` has to live until the process ends.
void set_memory_fault(const MemoryFault& fault, MemoryCount* count);

/// Counting begins in every thread (a whole program), or in the calling one alone (a scenario's operation).
void count_all_allocations();
void count_allocations_here(bool on);

}  // namespace qz_fault

#endif  // QZLOG_TESTS_FAULTS_MEMORY_FAULTS_H
