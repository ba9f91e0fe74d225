// The whole job through the library, on both paths.
#include "bench/case.h"
#include "bench/whole_job.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

template <typename Workload>
void add_narrow(CaseList& cases) {
  cases.add_text(std::string(Workload::kName) + "/narrow/qzlog", narrow_path(), Workload::kText,
                 [] { return WholeJob<Workload>(); });
}

template <typename Workload>
void add_icu(CaseList& cases, const std::string& variant) {
  cases.add_text(std::string(Workload::kName) + "/" + variant + "/qzlog", icu_path(), Workload::kIcuText,
                 [] { return WholeJob<Workload>(); });
}

}  // namespace

void add_whole_job_cases(CaseList& cases) {
  add_narrow<WorkloadA>(cases);
  add_narrow<WorkloadB>(cases);
  add_narrow<WorkloadC>(cases);
  add_icu<WorkloadAPlain>(cases, "icu_plain");
  add_icu<WorkloadB>(cases, "icu_plain");
  add_icu<WorkloadCPlain>(cases, "icu_plain");
  add_icu<WorkloadA>(cases, "icu_float");
  add_icu<WorkloadC>(cases, "icu_float");
}

}  // namespace qzlog_bench
