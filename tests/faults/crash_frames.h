#ifndef QZLOG_TESTS_FAULTS_CRASH_FRAMES_H
#define QZLOG_TESTS_FAULTS_CRASH_FRAMES_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace qz_fault {

/// The calls of a traced thread that is stopped, innermost first, as "MODULE FUNCTION"; at most `most` of them.
std::vector<std::string> frames_of(pid_t process, pid_t thread, std::size_t most);

}  // namespace qz_fault

#endif  // QZLOG_TESTS_FAULTS_CRASH_FRAMES_H
