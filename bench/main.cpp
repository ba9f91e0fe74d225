#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include <qzlog.h>

#include "bench/case.h"

namespace qzlog_bench {
namespace {

CaseList all_cases() {
  CaseList cases;
  add_whole_job_cases(cases);
  add_fmt_cases(cases);
  add_snprintf_cases(cases);
  add_spdlog_cases(cases);
  add_variant_map_cases(cases);
  add_boost_log_cases(cases);
  add_json_cases(cases);
  add_entry_line_cases(cases);
  add_message_format_cases(cases);
  add_format_cases(cases);
  add_catalog_cases(cases);
  add_refused_cases(cases);
  add_sink_cases(cases);
  add_journal_cases(cases);
  add_syslog_cases(cases);
#ifdef QZLOG_BENCH_PLUGIN
  add_otlp_cases(cases);
#endif
  add_floor_cases(cases);
  add_operation_cases(cases);
  add_attribute_cases(cases);
  add_filter_cases(cases);
  add_configuration_cases(cases);
  add_debug_log_cases(cases);
  add_counter_cases(cases);
  add_thread_cases(cases);
  add_find_entry_cases(cases);
  add_rotation_cases(cases);
  add_memory_cases(cases);
  return cases;
}

void register_case(const Case& each) {
  benchmark::internal::Benchmark* const registered = benchmark::RegisterBenchmark(each.name.c_str(), each.measure);
  if (each.iterations != 0) registered->Iterations(each.iterations);
}

int run_benchmarks(const CaseList& cases, int argc, char** argv) {
  for (const Case& each : cases.all()) register_case(each);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return EXIT_SUCCESS;
}

int repeat_case(const CaseList& cases, const char* name, const char* count) {
  const Case* const found = cases.find(name);
  if (found == nullptr) {
    std::fprintf(stderr, "qzlog_bench: there is no case %s\n", name);
    return 2;
  }
  found->repeat(std::strtol(count, nullptr, 10));
  return EXIT_SUCCESS;
}

/// qzlog_bench [OPTIONS OF GOOGLE BENCHMARK] | --once CASE COUNT
int run(int argc, char** argv) {
  // Times are shown on the same clock everywhere.
  setenv("TZ", "UTC", 1);
  const CaseList cases = all_cases();
  if (argc == 4 && std::strcmp(argv[1], "--once") == 0) return repeat_case(cases, argv[2], argv[3]);
  return run_benchmarks(cases, argc, argv);
}

}  // namespace
}  // namespace qzlog_bench

int main(int argc, char** argv) try {
  return qzlog_bench::run(argc, argv);
} catch (const qz_EXCEPTION_base& exception) {
  const char* const message = exception.get_message();
  std::fprintf(stderr, "qzlog_bench: %s\n", message != nullptr ? message : "no memory");
  return EXIT_FAILURE;
} catch (const std::exception& exception) {
  std::fprintf(stderr, "qzlog_bench: %s\n", exception.what());
  return EXIT_FAILURE;
}
