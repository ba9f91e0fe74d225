// The debug log while it is off.
#include <qzlog.h>

#include "bench/case.h"
#include "bench/run_time_value.h"

namespace qzlog_bench {
namespace {

void log_nothing() {
  unsigned number = 7;
  make_unknown(number);
  LogDebugMessage(3, "number %u\n", number);
}

}  // namespace

void add_debug_log_cases(CaseList& cases) {
  cases.add("debug_log/off", narrow_path(), [] { return log_nothing; });
}

}  // namespace qzlog_bench
