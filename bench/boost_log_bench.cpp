// Peer: Boost.Log records with attributes, formatted by a sink that keeps the last message in memory.
#include <boost/log/attributes/attribute_value_impl.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/basic_sink_backend.hpp>
#include <boost/log/sinks/unlocked_frontend.hpp>
#include <boost/log/sources/logger.hpp>
#include <boost/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>

#include <iomanip>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "bench/case.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

namespace attrs = boost::log::attributes;
namespace expr = boost::log::expressions;
namespace sinks = boost::log::sinks;

class MemoryBackend : public sinks::basic_formatted_sink_backend<char, sinks::concurrent_feeding> {
 public:
  void consume(const boost::log::record_view& /*record*/, const string_type& text) { text_ = text; }
  const char* text() const { return text_.c_str(); }

 private:
  string_type text_;
};

using MemorySink = sinks::unlocked_sink<MemoryBackend>;

/// A sink of the process's logging core while the object lives.
class InstalledSink {
 public:
  template <typename Formatter>
  explicit InstalledSink(const Formatter& formatter) : sink_(boost::make_shared<MemorySink>()) {
    sink_->set_formatter(formatter);
    boost::log::core::get()->add_sink(sink_);
  }
  ~InstalledSink() { boost::log::core::get()->remove_sink(sink_); }
  InstalledSink(const InstalledSink&) = delete;
  InstalledSink& operator=(const InstalledSink&) = delete;

  const char* text() const { return sink_->locked_backend()->text(); }

 private:
  boost::shared_ptr<MemorySink> sink_;
};

/// What a record holds of a value: texts as copies, and no number that a stream would take for a character.
std::string stored(const char* text) { return text; }
unsigned stored(unsigned char number) { return number; }
template <typename Number>
Number stored(Number number) {
  return number;
}

const auto six_digits = std::setprecision(6);

auto formatter_of(const WorkloadA& /*workload*/) {
  return expr::stream << std::fixed << six_digits << "Volume " << expr::attr<std::string>("Name") << ": "
                      << expr::attr<unsigned>("Blocks") << " blocks, change " << expr::attr<int>("Delta") << ", load "
                      << expr::attr<double>("Load") << ", label " << expr::attr<std::string>("Label");
}

auto formatter_of(const WorkloadB& /*workload*/) {
  return expr::stream << "Job finished: " << expr::attr<unsigned>("Number");
}

auto formatter_of(const WorkloadC& /*workload*/) {
  return expr::stream << std::fixed << six_digits << "Volume " << expr::attr<std::string>("Name") << " on "
                      << expr::attr<std::string>("Host") << ": " << expr::attr<unsigned>("Blocks") << " blocks, "
                      << expr::attr<unsigned>("Free") << " free, change " << expr::attr<int>("Delta") << ", load "
                      << expr::attr<double>("Load") << ", queue " << expr::attr<unsigned short>("Queue") << ", drift "
                      << expr::attr<short>("Drift") << ", retries " << expr::attr<unsigned>("Retries") << ", label "
                      << expr::attr<std::string>("Label");
}

template <typename Workload>
class BoostLogJob {
 public:
  BoostLogJob() : sink_(std::make_shared<InstalledSink>(formatter_of(workload_))) {}

  const char* operator()(char* /*buffer*/) {
    make_unknown(workload_);
    boost::log::record record = logger_.open_record();
    require(static_cast<bool>(record), "the sink wants the record");
    add_values(record, std::make_index_sequence<Workload::kFields.size()>());
    logger_.push_record(std::move(record));
    return sink_->text();
  }

 private:
  template <std::size_t... kIndex>
  void add_values(boost::log::record& record, std::index_sequence<kIndex...>) const {
    const auto values = workload_.values();
    (record.attribute_values().insert(Workload::kFields[kIndex].name,
                                      attrs::make_attribute_value(stored(std::get<kIndex>(values)))),
     ...);
  }

  Workload workload_;
  boost::log::sources::logger logger_;
  std::shared_ptr<InstalledSink> sink_;
};

template <typename Workload>
void add_case(CaseList& cases) {
  cases.add_text(std::string(Workload::kName) + "/narrow/boost_log", narrow_path(), Workload::kText,
                 [] { return BoostLogJob<Workload>(); });
}

}  // namespace

void add_boost_log_cases(CaseList& cases) {
  add_case<WorkloadA>(cases);
  add_case<WorkloadB>(cases);
  add_case<WorkloadC>(cases);
}

}  // namespace qzlog_bench
