// Workload D: entries that a filter refuses, before and after their attributes are added.
#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

_qz_LOG_entry_filter filter_above(unsigned level) {
  return {nullptr, nullptr, 0xFFFFFFFFU, level + 1, 9, "bench", false, false};
}

/// The filter decides by the level, so a caller asks it first.
class RefusedBeforeAttributes {
 public:
  void operator()() {
    make_unknown(entry_id_);
    const qz_LOG_LogEntry entry(entry_id_, kLogLevel);
    require(!filter_.check_entry(entry), "the filter refuses the entry");
  }

 private:
  unsigned entry_id_ = WorkloadA::kEntryId;
  _qz_LOG_entry_filter filter_ = filter_above(kLogLevel);
};

class RefusedAfterAttributes {
 public:
  void operator()() {
    make_unknown(workload_);
    qz_LOG_LogEntry entry(WorkloadA::kEntryId, kLogLevel);
    add_attributes(entry, workload_);
    require(!filter_.check_entry(entry), "the filter refuses the entry");
  }

 private:
  WorkloadA workload_;
  _qz_LOG_entry_filter filter_ = filter_above(kLogLevel);
};

}  // namespace

void add_refused_cases(CaseList& cases) {
  for (const bool icu : {false, true}) {
    const Settings settings = icu ? icu_path() : narrow_path();
    const std::string path = icu ? "icu" : "narrow";
    cases.add("D/" + path + "_before_attributes/qzlog", settings, [] { return RefusedBeforeAttributes(); });
    cases.add("D/" + path + "_after_attributes/qzlog", settings, [] { return RefusedAfterAttributes(); });
  }
}

}  // namespace qzlog_bench
