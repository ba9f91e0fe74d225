#ifndef QZLOG_TESTS_FAULTS_FAULT_MARKS_H
#define QZLOG_TESTS_FAULTS_FAULT_MARKS_H

/// What the programs of this folder say to each other.
namespace qz_fault {

/// A mark is the system call prctl(kMarkOption, Mark, 0, 0, 0), which the kernel refuses and fault_run sees.
constexpr int kMarkOption = 0x515a4654;

enum Mark : unsigned long {
  kMainReached = 1,  ///< the dynamic loader and the constructors have run
  kFaultsBegin = 2,  ///< a scenario's operation begins
  kFaultsEnd = 3,    ///< and has ended
};

}  // namespace qz_fault

extern "C" {

/// Defined by libqzlog_faults.so, null without it. Between the two, faults are injected: memory faults in the calling
/// thread alone. Both are counted from the first `begin` on, so that an operation may be made of several parts.
__attribute__((weak)) void qz_faults_begin();
__attribute__((weak)) void qz_faults_end();
}

#endif  // QZLOG_TESTS_FAULTS_FAULT_MARKS_H
