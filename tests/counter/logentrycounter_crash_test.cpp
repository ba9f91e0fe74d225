#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <atomic>
#include <iostream>
#include <new>
#include <set>

#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"
#include "tests/counter/counter_model.h"
#include "tests/support/rounds.h"

namespace {

using namespace qz_test;

/// How far the child has come, in memory that outlives it.
struct Progress {
  std::atomic<unsigned> started;
  std::atomic<unsigned> finished;
};

class SharedProgress {
 public:
  SharedProgress()
      : memory_(mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
        progress_(new (memory_) Progress{}) {}
  ~SharedProgress() { munmap(memory_, sizeof(Progress)); }
  SharedProgress(const SharedProgress&) = delete;
  SharedProgress& operator=(const SharedProgress&) = delete;

  Progress* operator->() const { return progress_; }

 private:
  void* memory_;
  Progress* progress_;
};

/// The operation with this number, on a counter or on the model: mostly counting, some updates and deletes.
struct Operation {
  Operation(unsigned round, unsigned number) {
    unsigned mixed = round * 2654435761U ^ number * 40503U;
    for (int i = 0; i < 3; ++i) mixed = (mixed ^ mixed >> 15) * 2246822519U;
    kind = mixed >> 8 & 15;
    key = static_cast<int>(mixed >> 12 & 3);
    day = static_cast<int>(mixed >> 16 & 1) + 1;
    count = static_cast<int>(mixed >> 20);
  }
  void apply(_qz_LOG_EntryCounter& counter) const {
    if (kind == 0) counter.UpdateEntryCount(2020, 1, day, key, count);
    if (kind == 1) counter.DeleteEntryElement(2020, 1, day, key);
    if (kind > 1) counter.IncreaseCount(2020, 1, day, key);
  }
  void apply(CounterModel& model) const {
    if (kind == 0) model.update(2020, 1, day, key, count);
    if (kind == 1) model.remove(2020, 1, day, key);
    if (kind > 1) model.increase(2020, 1, day, key);
  }

  unsigned kind;
  int key;
  int day;
  int count;
};

class KilledCounter : public CounterTest {
 protected:
  static constexpr unsigned kRounds = qz_test::rounds(600);

  [[noreturn]] void count_until_killed(unsigned round) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    open();
    for (unsigned number = 0; number < 10000000; ++number) {
      progress_->started = number + 1;
      Operation(round, number).apply(counter_);
      progress_->finished = number + 1;
    }
    _exit(1);
  }

  /// False when the child ended by itself.
  bool kill_at_a_random_moment(unsigned round) {
    progress_->started = 0;
    progress_->finished = 0;
    const pid_t child = fork();
    if (child == 0) count_until_killed(round);
    const auto target = static_cast<unsigned>(random_.between(0, 200));
    while (progress_->started < target) sched_yield();
    for (auto turns = random_.between(0, 3000); turns > 0; --turns) std::atomic_signal_fence(std::memory_order_seq_cst);
    kill(child, SIGKILL);
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  }

  /// Whether the file is what the finished operations, and perhaps the one that was begun, make of `image`.
  testing::AssertionResult is_old_or_new(unsigned round, std::string image, const std::string& found) {
    CounterModel model;
    model.open(&image, true);
    for (unsigned number = 0; number < progress_->finished; ++number) Operation(round, number).apply(model);
    if (found == image) return testing::AssertionSuccess();
    for (unsigned number = progress_->finished; number < progress_->started; ++number) {
      Operation(round, number).apply(model);
    }
    if (found == image) ++begun_and_written_;
    return same_records(found, image);
  }

  SharedProgress progress_;
  SeededRandom random_;
  unsigned begun_and_written_ = 0;
};

TEST_F(KilledCounter, AtAnyMoment_LosesNothingAndTheCountIsOldOrNew) {
  write("");
  unsigned losses = 0;
  unsigned operations = 0;
  const auto start = static_cast<unsigned>(random_.between(0, 1000000));
  for (unsigned i = 0; i < kRounds; ++i) {
    const std::string before = read();
    ASSERT_TRUE(kill_at_a_random_moment(start + i));
    const std::string after = read();
    EXPECT_EQ(after.size() % kRecordBytes, 0U);
    const auto result = is_old_or_new(start + i, before, after);
    if (!result) ++losses;
    EXPECT_TRUE(result) << "round " << i;
    operations += progress_->finished;
  }
  EXPECT_EQ(losses, 0U);
  std::cout << "kill rounds: " << kRounds << ", losses: " << losses << ", operations: " << operations
            << ", killed between write and return: " << begun_and_written_ << "\n";
}

}  // namespace
