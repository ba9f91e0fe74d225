#ifndef QZLOG_BENCH_CASE_H
#define QZLOG_BENCH_CASE_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "bench/allocations.h"
#include "bench/settings.h"

namespace qzlog_bench {

/// The size of the buffers that messages are written to, without the terminator.
inline constexpr long kTextSize = 256;

/// What a case has to give: a text, or a function that makes it when the settings are in force.
class Expected {
 public:
  Expected(std::string text) : text_([text = std::move(text)] { return text; }) {}
  Expected(const char* text) : Expected(std::string(text)) {}
  Expected(std::function<std::string()> text) : text_(std::move(text)) {}

  std::string text() const { return text_(); }

 private:
  std::function<std::string()> text_;
};

/// Ends the program with an error when a case does not give the text that it has to give.
void check_text(const std::string& case_name, const std::string& expected, const char* text);
/// Ends the program with an error when something that a case relies on does not hold.
[[noreturn]] void report_violation(const char* what);
inline void require(bool condition, const char* what) {
  if (!condition) [[unlikely]]
    report_violation(what);
}

/// One thing measured. Its name is WORKLOAD/VARIANT/WHO.
struct Case {
  std::string name;
  std::function<void(benchmark::State&)> measure;  ///< as Google Benchmark asks for it
  std::function<void(long count)> repeat;          ///< so many times, and nothing else
  long iterations = 0;                             ///< how often; 0: as often as it takes
};

/// All cases, in the order in which they are reported.
///
/// Each is given as a function that makes its job: something to be called again and again. It is called for every run,
/// with the settings in force, and its time is not measured. The job's first call is not measured either.
class CaseList {
 public:
  /// A job that takes a buffer of kTextSize + 1 bytes and returns its text, in the buffer or somewhere else, which must
  /// be the one expected before anything is measured.
  template <typename MakeJob>
  Case& add_text(const std::string& name, const Settings& settings, const Expected& expected, MakeJob make_job) {
    const auto prepare = [=] {
      apply(settings);
      auto job = make_job();
      char buffer[kTextSize + 1];
      check_text(name, expected.text(), job(buffer));
      return job;
    };
    const auto measure_all = [=](benchmark::State& state) {
      auto job = prepare();
      char buffer[kTextSize + 1];
      measure(state, [&] { benchmark::DoNotOptimize(job(buffer)); });
    };
    const auto repeat = [=](long count) {
      auto job = prepare();
      char buffer[kTextSize + 1];
      for (long i = 0; i < count; ++i) benchmark::DoNotOptimize(job(buffer));
    };
    return add_case(name, measure_all, repeat);
  }

  /// A job that takes and returns nothing; it checks itself what there is to check.
  template <typename MakeJob>
  Case& add(const std::string& name, const Settings& settings, MakeJob make_job) {
    const auto prepare = [=] {
      apply(settings);
      auto job = make_job();
      job();
      return job;
    };
    const auto measure_all = [=](benchmark::State& state) {
      auto job = prepare();
      measure(state, job);
    };
    const auto repeat = [=](long count) {
      auto job = prepare();
      for (long i = 0; i < count; ++i) job();
    };
    return add_case(name, measure_all, repeat);
  }

  /// Numbers that are no times: `count` gives them by name, once.
  template <typename Count>
  Case& add_count(const std::string& name, const Settings& settings, Count count) {
    const auto report = [=](benchmark::State& state) {
      apply(settings);
      for (const auto& [key, value] : count()) state.counters[key] = static_cast<double>(value);
      for ([[maybe_unused]] auto iteration : state) {
      }
    };
    Case& added = add_case(name, report, [=](long /*times*/) { apply(settings), count(); });
    added.iterations = 1;
    return added;
  }

  const std::vector<Case>& all() const { return cases_; }
  /// Null when there is none.
  const Case* find(const std::string& name) const;

 private:
  template <typename Step>
  static void measure(benchmark::State& state, Step&& step) {
    const long before = allocation_count();
    for ([[maybe_unused]] auto iteration : state) step();
    state.counters["allocs"] =
        benchmark::Counter(static_cast<double>(allocation_count() - before), benchmark::Counter::kAvgIterations);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
  }

  Case& add_case(const std::string& name, std::function<void(benchmark::State&)> measure,
                 std::function<void(long)> repeat) {
    cases_.push_back({name, std::move(measure), std::move(repeat)});
    return cases_.back();
  }

  std::vector<Case> cases_;
};

/// One function per file of cases.
void add_attribute_cases(CaseList& cases);
void add_boost_log_cases(CaseList& cases);
void add_catalog_cases(CaseList& cases);
void add_configuration_cases(CaseList& cases);
void add_counter_cases(CaseList& cases);
void add_debug_log_cases(CaseList& cases);
void add_entry_line_cases(CaseList& cases);
void add_filter_cases(CaseList& cases);
void add_find_entry_cases(CaseList& cases);
void add_floor_cases(CaseList& cases);
void add_fmt_cases(CaseList& cases);
void add_format_cases(CaseList& cases);
void add_journal_cases(CaseList& cases);
void add_json_cases(CaseList& cases);
void add_memory_cases(CaseList& cases);
void add_message_format_cases(CaseList& cases);
void add_operation_cases(CaseList& cases);
void add_refused_cases(CaseList& cases);
void add_rotation_cases(CaseList& cases);
void add_sink_cases(CaseList& cases);
void add_snprintf_cases(CaseList& cases);
void add_spdlog_cases(CaseList& cases);
void add_syslog_cases(CaseList& cases);
void add_otlp_cases(CaseList& cases);
void add_thread_cases(CaseList& cases);
void add_variant_map_cases(CaseList& cases);
void add_whole_job_cases(CaseList& cases);

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_CASE_H
