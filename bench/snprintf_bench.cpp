// Floor: the same values printed with snprintf into a buffer, and nothing else.
#include <cstdio>

#include "bench/case.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

template <typename Workload>
class SnprintfJob {
 public:
  const char* operator()(char* buffer) {
    make_unknown(workload_);
    std::apply([&](const auto&... values) { std::snprintf(buffer, kTextSize, Workload::kPrintf, values...); },
               workload_.values());
    return buffer;
  }

 private:
  Workload workload_;
};

template <typename Workload>
void add_case(CaseList& cases) {
  cases.add_text(std::string(Workload::kName) + "/narrow/snprintf", narrow_path(), Workload::kText,
                 [] { return SnprintfJob<Workload>(); });
}

}  // namespace

void add_snprintf_cases(CaseList& cases) {
  add_case<WorkloadA>(cases);
  add_case<WorkloadB>(cases);
  add_case<WorkloadC>(cases);
}

}  // namespace qzlog_bench
