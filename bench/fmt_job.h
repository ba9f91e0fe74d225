#ifndef QZLOG_BENCH_FMT_JOB_H
#define QZLOG_BENCH_FMT_JOB_H

#include <fmt/format.h>

#include <tuple>

#include "bench/run_time_value.h"

namespace qzlog_bench {

/// Prints a workload's values with fmt into a buffer, and nothing else.
template <typename Workload, const char* kFormat>
class FmtJob {
 public:
  const char* operator()(char* buffer) {
    make_unknown(workload_);
    char* const end = std::apply([&](const auto&... values) { return fmt::format_to(buffer, kFormat, values...); },
                                 workload_.values());
    *end = '\0';
    return buffer;
  }

 private:
  Workload workload_;
};

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_FMT_JOB_H
