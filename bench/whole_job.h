#ifndef QZLOG_BENCH_WHOLE_JOB_H
#define QZLOG_BENCH_WHOLE_JOB_H

#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/run_time_value.h"

namespace qzlog_bench {

/// What a caller of qzlog does for one message: an entry on the stack, its attributes, its text, and the entry's end.
template <typename Workload>
class WholeJob {
 public:
  explicit WholeJob(unsigned entry_id = Workload::kEntryId) : entry_id_(entry_id) {}

  const char* operator()(char* buffer) {
    make_unknown(workload_);
    qz_LOG_LogEntry entry(entry_id_, kLogLevel);
    add_attributes(entry, workload_);
    return entry.GetReadableMessage(buffer, kTextSize, false, 0);
  }

 private:
  Workload workload_;
  unsigned entry_id_;
};

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_WHOLE_JOB_H
