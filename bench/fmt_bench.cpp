// Floor: the same values printed with fmt into a buffer, and nothing else.
#include "bench/case.h"
#include "bench/fmt_job.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

template <typename Workload>
void add_case(CaseList& cases) {
  cases.add_text(std::string(Workload::kName) + "/narrow/fmt", narrow_path(), Workload::kText,
                 [] { return FmtJob<Workload, Workload::kFmt>(); });
}

/// With the shortest text of the floating point number, for comparison: that is another text, and less work.
template <typename Workload>
void add_shortest_case(CaseList& cases) {
  cases.add_text(std::string(Workload::kName) + "/narrow/fmt_shortest", narrow_path(), Workload::kShortestText,
                 [] { return FmtJob<Workload, Workload::kFmtShortest>(); });
}

}  // namespace

void add_fmt_cases(CaseList& cases) {
  add_case<WorkloadA>(cases);
  add_case<WorkloadB>(cases);
  add_case<WorkloadC>(cases);
  add_shortest_case<WorkloadA>(cases);
  add_shortest_case<WorkloadC>(cases);
}

}  // namespace qzlog_bench
