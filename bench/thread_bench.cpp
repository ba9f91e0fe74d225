// The whole job in one thread and in two at once, with the same entry ID and with different ones.
#include <string>

#include "bench/case.h"
#include "bench/whole_job.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

/// `twin_id` has the same definition as the workload's ID.
template <typename Workload>
void add_group(CaseList& cases, const std::string& path, const Settings& settings, const char* expected,
               unsigned twin_id) {
  const auto same_id = [] { return WholeJob<Workload>(); };
  const auto different_ids = [=](int thread) { return WholeJob<Workload>(thread == 0 ? Workload::kEntryId : twin_id); };
  cases.add_text("threads/" + path + "/one", settings, expected, same_id).in_real_time = true;
  cases.add_text("threads/" + path + "/two_same_id", settings, expected, same_id).threads = 2;
  cases.add_text("threads/" + path + "/two_different_ids", settings, expected, different_ids).threads = 2;
}

}  // namespace

void add_thread_cases(CaseList& cases) {
  constexpr unsigned kTwinOfA = 1002;
  constexpr unsigned kTwinOfPlainA = 1004;
  add_group<WorkloadA>(cases, "narrow", narrow_path(), WorkloadA::kText, kTwinOfA);
  add_group<WorkloadAPlain>(cases, "icu_plain", icu_path(), WorkloadAPlain::kIcuText, kTwinOfPlainA);
}

}  // namespace qzlog_bench
