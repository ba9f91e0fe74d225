// Peer: spdlog with a sink that keeps the last message in memory.
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>

#include <memory>

#include "bench/case.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

class MemorySink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  /// The last message, zero-terminated.
  const char* text() const { return text_.data(); }

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    text_.clear();
    formatter_->format(message, text_);
    text_.push_back('\0');
  }
  void flush_() override {}

 private:
  spdlog::memory_buf_t text_;
};

template <typename Workload>
class SpdlogJob {
 public:
  explicit SpdlogJob(spdlog::level::level_enum level = spdlog::level::info)
      : sink_(std::make_shared<MemorySink>()), logger_(std::make_shared<spdlog::logger>("bench", sink_)) {
    logger_->set_formatter(
        std::make_unique<spdlog::pattern_formatter>("%v", spdlog::pattern_time_type::local, std::string()));
    logger_->set_level(level);
  }

  void log() {
    make_unknown(workload_);
    std::apply([&](const auto&... values) { logger_->info(Workload::kFmt, values...); }, workload_.values());
  }

  const char* operator()(char* /*buffer*/) {
    log();
    return sink_->text();
  }

 private:
  Workload workload_;
  std::shared_ptr<MemorySink> sink_;
  std::shared_ptr<spdlog::logger> logger_;
};

template <typename Workload>
void add_case(CaseList& cases) {
  cases.add_text(std::string(Workload::kName) + "/narrow/spdlog", narrow_path(), Workload::kText,
                 [] { return SpdlogJob<Workload>(); });
}

/// A call of a logger whose level is higher.
class DisabledJob {
 public:
  void operator()() { job_.log(); }

 private:
  SpdlogJob<WorkloadA> job_{spdlog::level::warn};
};

}  // namespace

void add_spdlog_cases(CaseList& cases) {
  add_case<WorkloadA>(cases);
  add_case<WorkloadB>(cases);
  add_case<WorkloadC>(cases);
  cases.add("D/disabled/spdlog", narrow_path(), [] { return DisabledJob(); });
}

}  // namespace qzlog_bench
