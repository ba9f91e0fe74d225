// The whole job in two threads at once, with the same entry ID and with different ones, in multiples of one thread; and
// what two threads get out of the machine at the same moments that have nothing else in common.
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "bench/case.h"
#include "bench/fmt_job.h"
#include "bench/whole_job.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

using Clock = std::chrono::steady_clock;
using Job = std::function<void()>;
using MakeJob = std::function<Job(int thread)>;

/// Where a machine's speed changes from one tenth of a second to the next, only neighbouring measurements can be
/// compared.
constexpr int kRounds = 75;
constexpr std::chrono::milliseconds kPartOfARound{4};

/// Keeps the calling thread on the n-th of the processors that the process may use: the scheduler needs longer than a
/// measurement takes to see that two threads which have just woken each other want one each.
void stay_on_processor(int n) {
  cpu_set_t usable;
  require(sched_getaffinity(0, sizeof usable, &usable) == 0, "the process knows its processors");
  for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
    if (!CPU_ISSET(processor, &usable) || n-- != 0) continue;
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(processor, &only);
    require(pthread_setaffinity_np(pthread_self(), sizeof only, &only) == 0, "a thread can choose its processor");
    return;
  }
}

struct Span {
  Clock::time_point begin;
  Clock::time_point end;
};

Span repeat(const Job& job, long count) {
  const Clock::time_point begin = Clock::now();
  for (long i = 0; i < count; ++i) job();
  return {begin, Clock::now()};
}

/// One job, done by one thread alone and by both at once, again and again.
class Scaling {
 public:
  explicit Scaling(MakeJob make_job) : make_job_(std::move(make_job)) {}

  Job make_job(int thread) const { return make_job_(thread); }
  void choose_count(const Job& job) {
    constexpr long kTried = 1000;
    const Span tried = repeat(job, kTried);
    count_ = std::max(1L, kTried * static_cast<long>(kPartOfARound / (tried.end - tried.begin)));
  }
  void measure_alone(const Job& job) { alone_ = repeat(job, count_); }
  void measure_both(int thread, const Job& job) { both_[static_cast<std::size_t>(thread)] = repeat(job, count_); }
  void end_round() {
    const auto both = std::max(both_[0].end, both_[1].end) - std::min(both_[0].begin, both_[1].begin);
    ratios_.push_back(2 * static_cast<double>((alone_.end - alone_.begin).count()) / static_cast<double>(both.count()));
  }

  /// How many times as many jobs two threads did in the same time, in each round.
  const std::vector<double>& ratios() const { return ratios_; }

 private:
  MakeJob make_job_;
  long count_ = 0;
  Span alone_;
  std::array<Span, 2> both_;
  std::vector<double> ratios_;
};

/// Both threads live as long as the measurement, for the library keeps things per thread. The jobs take turns.
void measure(std::vector<Scaling>& scalings) {
  std::barrier<> together(2);
  const auto work = [&](int thread) {
    stay_on_processor(thread);
    std::vector<Job> jobs;
    for (const Scaling& scaling : scalings) {
      jobs.push_back(scaling.make_job(thread));
      repeat(jobs.back(), 1000);
    }
    together.arrive_and_wait();
    for (std::size_t i = 0; thread == 0 && i < jobs.size(); ++i) scalings[i].choose_count(jobs[i]);
    together.arrive_and_wait();
    for (int round = 0; round < kRounds; ++round) {
      for (std::size_t i = 0; i < jobs.size(); ++i) {
        if (thread == round % 2) scalings[i].measure_alone(jobs[i]);
        together.arrive_and_wait();
        scalings[i].measure_both(thread, jobs[i]);
        together.arrive_and_wait();
        if (thread == 0) scalings[i].end_round();
        together.arrive_and_wait();
      }
    }
  };
  std::thread first(work, 0);
  std::thread second(work, 1);
  first.join();
  second.join();
}

/// 0 of none.
double median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// A job that writes into a buffer of its own the text that is expected.
template <typename Write>
Job writing(Write write, const char* expected) {
  char buffer[kTextSize + 1];
  check_text("threads", expected, write(buffer));
  return [write]() mutable {
    char own_buffer[kTextSize + 1];
    benchmark::DoNotOptimize(write(own_buffer));
  };
}

/// The processors of a machine may be two halves of one for a while. Only rounds in which two threads got twice as much
/// out of fmt, or nearly so, say something about two processors.
std::map<std::string, double> where_fmt_scales(const Scaling& scaling, const Scaling& fmt) {
  constexpr double kTwoProcessors = 1.9;
  std::vector<double> ratios;
  for (std::size_t i = 0; i < fmt.ratios().size(); ++i) {
    if (fmt.ratios()[i] >= kTwoProcessors) ratios.push_back(scaling.ratios()[i]);
  }
  return {{"of_one", median(ratios)}, {"of_one_fmt", median(fmt.ratios())}, {"rounds", ratios.size()}};
}

void add_scaling(CaseList& cases, const std::string& name, const Settings& settings, const MakeJob& make_job) {
  cases.add_count(name, settings, [=] {
    const auto fmt = [](int) { return writing(FmtJob<WorkloadA, WorkloadA::kFmt>(), WorkloadA::kText); };
    std::vector<Scaling> scalings = {Scaling(make_job), Scaling(fmt)};
    measure(scalings);
    return where_fmt_scales(scalings[0], scalings[1]);
  });
}

/// `twin_id` has the same definition as the workload's ID.
template <typename Workload>
void add_group(CaseList& cases, const std::string& path, const Settings& settings, const char* expected,
               unsigned twin_id) {
  const auto with_second_id = [=](unsigned second_id) {
    return
        [=](int thread) { return writing(WholeJob<Workload>(thread == 0 ? Workload::kEntryId : second_id), expected); };
  };
  add_scaling(cases, "threads/" + path + "/same_id", settings, with_second_id(Workload::kEntryId));
  add_scaling(cases, "threads/" + path + "/different_ids", settings, with_second_id(twin_id));
}

}  // namespace

void add_thread_cases(CaseList& cases) {
  constexpr unsigned kTwinOfA = 1002;
  constexpr unsigned kTwinOfPlainA = 1004;
  add_group<WorkloadA>(cases, "narrow", narrow_path(), WorkloadA::kText, kTwinOfA);
  add_group<WorkloadAPlain>(cases, "icu_plain", icu_path(), WorkloadAPlain::kIcuText, kTwinOfPlainA);
}

}  // namespace qzlog_bench
