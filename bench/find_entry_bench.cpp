// Finding definitions, through the construction of entries: how many IDs are in use, how many the file has, and whether
// it has the one that is wanted. And loading the file.
#include <benchmark/benchmark.h>

#include <string>

#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/generated_definitions.h"
#include "bench/run_time_value.h"

namespace qzlog_bench {
namespace {

void construct(unsigned entry_id) {
  make_unknown(entry_id);
  const qz_LOG_LogEntry entry(entry_id, kLogLevel);
  benchmark::DoNotOptimize(&entry);
}

/// Entries of so many IDs in turn, spread over a file of `file_ids`.
class Rotate {
 public:
  Rotate(unsigned ids, unsigned file_ids) : ids_(ids), step_(file_ids / ids) {
    for (unsigned i = 0; i < ids_; ++i) (*this)();
  }

  void operator()() {
    construct(kFirstGeneratedId + next_ * step_);
    next_ = next_ + 1 < ids_ ? next_ + 1 : 0;
  }

 private:
  unsigned ids_;
  unsigned step_;
  unsigned next_ = 0;
};

/// The ID that was used last, again and again, after so many others.
class Repeat {
 public:
  Repeat(unsigned ids, unsigned file_ids) {
    const Rotate once_through(ids, file_ids);
    last_id_ = kFirstGeneratedId + (ids - 1) * (file_ids / ids);
  }

  void operator()() const { construct(last_id_); }

 private:
  unsigned last_id_;
};

void construct_undefined() {
  try {
    construct(kFirstGeneratedId - 1);
  } catch (const QZX_logging_entry_type_not_found&) {
    return;
  }
  report_violation("an ID that is not in the file is not found");
}

void load(const Settings& settings) {
  qz_LOG_LogConfig::SetDefinitionPath(settings.definitions.path(settings.definitions.count).c_str());
}

void add_ids_in_use(CaseList& cases) {
  constexpr unsigned kFileIds = 10000;
  const Settings settings = narrow_path_with({definitions_with_ids, kFileIds});
  for (const unsigned ids : {1U, 128U, 129U, 10000U}) {
    cases.add("find_entry/hot/" + std::to_string(ids), settings, [=] { return Repeat(ids, kFileIds); });
    cases.add("find_entry/rotating/" + std::to_string(ids), settings, [=] { return Rotate(ids, kFileIds); });
  }
}

/// Evicted: more IDs in turn than the library keeps.
void add_file_sizes(CaseList& cases, unsigned file_ids) {
  constexpr unsigned kRotatingIds = 1000;
  const Settings settings = narrow_path_with({definitions_with_ids, file_ids});
  const std::string size = std::to_string(file_ids);
  cases.add("load/" + size, settings, [=] { return [=] { load(settings); }; });
  cases.add("lookup/present/" + size, settings, [=] { return Repeat(1, file_ids); });
  cases.add("lookup/absent/" + size, settings, [] { return construct_undefined; });
  cases.add("lookup/evicted/" + size, settings, [=] { return Rotate(kRotatingIds, file_ids); });
}

}  // namespace

void add_find_entry_cases(CaseList& cases) {
  add_ids_in_use(cases);
  for (const unsigned file_ids : {1000U, 10000U, 100000U, 1000000U}) add_file_sizes(cases, file_ids);
}

}  // namespace qzlog_bench
