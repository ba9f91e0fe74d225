// Peer: ICU's MessageFormat with the workloads.
#include "bench/case.h"
#include "bench/message_format_job.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

template <typename Workload>
void add_case(CaseList& cases, const std::string& variant) {
  add_message_format_pair<Workload>(cases, std::string(Workload::kName) + "/" + variant, "en_US", Workload::kPattern,
                                    Workload::kIcuText);
}

}  // namespace

void add_message_format_cases(CaseList& cases) {
  add_case<WorkloadAPlain>(cases, "icu_plain");
  add_case<WorkloadB>(cases, "icu_plain");
  add_case<WorkloadCPlain>(cases, "icu_plain");
  add_case<WorkloadA>(cases, "icu_float");
  add_case<WorkloadC>(cases, "icu_float");
}

}  // namespace qzlog_bench
