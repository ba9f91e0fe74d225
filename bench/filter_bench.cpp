// The filter's decisions and configuration lookups.
#include <benchmark/benchmark.h>

#include <memory>

#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

/// An entry that passes, by the filter's own values and by those of the configuration file.
class Decide {
 public:
  Decide() : entry_(std::make_shared<qz_LOG_LogEntry>(WorkloadA::kEntryId, kLogLevel)) {}

  void operator()() {
    make_unknown(filter_);
    require(filter_.check_entry(*entry_), "the filter accepts the entry");
  }

 private:
  std::shared_ptr<qz_LOG_LogEntry> entry_;
  _qz_LOG_entry_filter filter_ = {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, "bench", false, false};
};

class Lookup {
 public:
  Lookup(const char* key, bool is_there) : key_(key), is_there_(is_there) {}

  void operator()() {
    make_unknown(key_);
    unsigned value = 0;
    require(qz_LOG_LogConfig::GetConfigurationIntegerValue("bench", key_, value) == is_there_, "the key is there");
    benchmark::DoNotOptimize(value);
  }

 private:
  const char* key_;
  bool is_there_;
};

Settings with_configuration() {
  Settings settings = narrow_path();
  settings.configuration = built_file("bench.conf");
  return settings;
}

}  // namespace

void add_filter_cases(CaseList& cases) {
  cases.add("filter/without_source", narrow_path(), [] { return Decide(); });
  cases.add("filter/with_source", with_configuration(), [] { return Decide(); });
}

void add_configuration_cases(CaseList& cases) {
  cases.add("configuration/own_section", with_configuration(), [] { return Lookup("LogLevelLow", true); });
  cases.add("configuration/global_section", with_configuration(), [] { return Lookup("Common", true); });
  cases.add("configuration/absent", with_configuration(), [] { return Lookup("Missing", false); });
}

}  // namespace qzlog_bench
