// Floors: what everything that allocates or takes a lock pays at least.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <shared_mutex>

#include "bench/case.h"
#include "bench/run_time_value.h"

namespace qzlog_bench {
namespace {

class MallocAndFree {
 public:
  void operator()() {
    make_unknown(size_);
    void* block = std::malloc(size_);
    make_unknown(block);
    std::free(block);
  }

 private:
  // About what an entry takes.
  std::size_t size_ = 800;
};

class ReaderLock {
 public:
  ReaderLock() : mutex_(std::make_shared<std::shared_mutex>()) {}

  void operator()() {
    const std::shared_lock lock(*mutex_);
    benchmark::ClobberMemory();
  }

 private:
  std::shared_ptr<std::shared_mutex> mutex_;
};

}  // namespace

void add_floor_cases(CaseList& cases) {
  cases.add("floor/malloc_free", narrow_path(), [] { return MallocAndFree(); });
  cases.add("floor/reader_lock", narrow_path(), [] { return ReaderLock(); });
}

}  // namespace qzlog_bench
