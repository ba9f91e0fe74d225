#ifndef QZLOG_TESTS_FAULTS_CALL_GROUPS_H
#define QZLOG_TESTS_FAULTS_CALL_GROUPS_H

#include <string>
#include <vector>

namespace qz_fault {

/// Where a call names the file that it is about.
enum class Subject { kNone, kDescriptor, kPath, kPathAt };

/// The system calls that do the same thing, by whatever number.
struct CallGroup {
  const char* name;
  Subject subject;
  std::vector<long> numbers;
};

/// Every group that --calls takes, in a fixed order.
const std::vector<CallGroup>& call_groups();

/// The groups of `names`, a list separated by commas. Throws std::invalid_argument for a name that is none.
std::vector<const CallGroup*> find_call_groups(const std::string& names);

}  // namespace qz_fault

#endif  // QZLOG_TESTS_FAULTS_CALL_GROUPS_H
