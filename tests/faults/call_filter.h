#ifndef QZLOG_TESTS_FAULTS_CALL_FILTER_H
#define QZLOG_TESTS_FAULTS_CALL_FILTER_H

#include <vector>

#include "tests/faults/call_groups.h"

namespace qz_fault {

/// From now on the calling process and all that it starts stop at the calls of these groups, and at marks, for a
/// tracer; without one they fail. Every other call runs at full speed. An ordinary user may do so. Returns false when
/// the kernel does not allow it.
bool stop_at_calls(const std::vector<const CallGroup*>& groups);

}  // namespace qz_fault

#endif  // QZLOG_TESTS_FAULTS_CALL_FILTER_H
