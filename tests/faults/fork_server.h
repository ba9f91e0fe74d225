#ifndef QZLOG_TESTS_FAULTS_FORK_SERVER_H
#define QZLOG_TESTS_FAULTS_FORK_SERVER_H

namespace qz_fault {

constexpr int kRequestDescriptor = 198;
constexpr int kReplyDescriptor = 199;

/// Stands where the program's main is about to be called, so that a run costs a fork and neither exec nor the dynamic
/// loader. Reads requests, one a line:
///   NTH FROM_THEN_ON TIMEOUT_MS FOLDER <tab> INPUT <tab> OUTPUT <tab> ERRORS
/// and for each forks a child, in which it returns: with FOLDER as the working directory, the three files as standard
/// streams, and the fault set. The parent replies with a line of
///   KIND NUMBER ALLOCATIONS FAILED LEFT_RUNNING
/// where KIND is "exit", "signal" or "hang", and ends the process when there are no more requests.
void serve_runs();

}  // namespace qz_fault

#endif  // QZLOG_TESTS_FAULTS_FORK_SERVER_H
