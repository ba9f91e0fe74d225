// Steps of the whole job: construction, copy, clear; and the whole job with definitions that are not at hand.
#include <benchmark/benchmark.h>

#include <memory>

#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/generated_definitions.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

class Construct {
 public:
  void operator()() {
    make_unknown(entry_id_);
    const qz_LOG_LogEntry entry(entry_id_, kLogLevel);
    benchmark::DoNotOptimize(&entry);
  }

 private:
  unsigned entry_id_ = WorkloadA::kEntryId;
};

std::shared_ptr<qz_LOG_LogEntry> entry_with_five() {
  auto entry = std::make_shared<qz_LOG_LogEntry>(WorkloadA::kEntryId, kLogLevel);
  add_attributes(*entry, WorkloadA());
  return entry;
}

class Copy {
 public:
  void operator()() const {
    const qz_LOG_LogEntry copy(*entry_);
    benchmark::DoNotOptimize(&copy);
  }

 private:
  std::shared_ptr<const qz_LOG_LogEntry> entry_ = entry_with_five();
};

class FillAndClear {
 public:
  void operator()() {
    make_unknown(workload_);
    add_attributes(*entry_, workload_);
    entry_->ClearAttribs();
  }

 private:
  WorkloadA workload_;
  std::shared_ptr<qz_LOG_LogEntry> entry_ = entry_with_five();
};

/// The whole job with one definition after the other, more than anything keeps.
class Rotating {
 public:
  static constexpr unsigned kDefinitions = 1000;

  const char* operator()(char* buffer) {
    make_unknown(workload_);
    qz_LOG_LogEntry entry(kFirstGeneratedId + next_, kLogLevel);
    next_ = (next_ + 1) % kDefinitions;
    add_attributes(entry, workload_);
    return entry.GetReadableMessage(buffer, kTextSize, false, 0);
  }

 private:
  WorkloadA workload_;
  unsigned next_ = 0;
};

}  // namespace

void add_operation_cases(CaseList& cases) {
  cases.add("operation/construct", narrow_path(), [] { return Construct(); });
  cases.add("operation/copy", narrow_path(), [] { return Copy(); });
  cases.add("operation/fill_and_clear", narrow_path(), [] { return FillAndClear(); });
  cases.add_text("A/narrow_1000_definitions/qzlog", narrow_path_with({definitions_like_a, Rotating::kDefinitions}),
                 text_like_a(kFirstGeneratedId), [] { return Rotating(); });
}

}  // namespace qzlog_bench
