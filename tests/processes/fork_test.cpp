#include <gtest/gtest.h>

#include <deque>

#include "qzlog.h"
#include "tests/processes/logging.h"
#include "tests/support/child_process.h"
#include "tests/support/rounds.h"

namespace qz_test {
namespace {

constexpr unsigned kThreads = 4;
constexpr int kForks = 40;
constexpr int kEntries = 30;

/// What a child of a fork may do: log and render, and make every setting anew.
int wrong_in_child(const Logging& logging, unsigned seed) {
  return logging.wrong_entries(seed, kEntries) + logging.wrong_entries_after_new_settings(seed, kEntries);
}

/// Statuses of children that a process forks one after the other while its threads log.
void expect_children_succeed(const Logging& logging, int forks) {
  for (int i = 0; i < forks; ++i) {
    const unsigned seed = 100 + static_cast<unsigned>(i);
    ASSERT_EQ(ChildProcess([&] { return wrong_in_child(logging, seed); }).wait(), 0) << "fork " << i;
  }
}

class ForkWhileThreadsLog : public testing::TestWithParam<Path> {
 protected:
  void SetUp() override {
#ifdef QZLOG_EMULATED
    GTEST_SKIP() << "the emulator's own lock of paths may be held by another thread, and stays so in the child";
#endif
  }
};

TEST_P(ForkWhileThreadsLog, ManyForks_EveryChildLogsAndRenders) {
  const Logging logging(GetParam());
  const LoggingThreads threads(logging, kThreads);
  expect_children_succeed(logging, rounds(kForks));
  EXPECT_EQ(threads.wrong_entries(), 0);
}

// What is made once in a process, here or inside ICU, is being made when these fork.
TEST_P(ForkWhileThreadsLog, FirstUse_EveryChildLogsAndRenders) {
  for (int i = 0; i < rounds(kForks); ++i) {
    ASSERT_EQ(ChildProcess([&] {
                const Logging logging(GetParam());
                const LoggingThreads threads(logging, kThreads);
                std::deque<ChildProcess> children;
                int wrong = 0;
                for (unsigned n = 0; n < 3; ++n) children.emplace_back([&] { return wrong_in_child(logging, n); });
                for (ChildProcess& child : children) wrong += child.wait() == 0 ? 0 : 1;
                return wrong;
              }).wait(),
              0)
        << "process " << i;
  }
}

TEST_P(ForkWhileThreadsLog, ChildForksAgain_GrandchildLogsAndRenders) {
  const Logging logging(GetParam());
  const LoggingThreads threads(logging, kThreads);
  for (int i = 0; i < 5; ++i) {
    expect_child_succeeds([&] { return ChildProcess([&] { return wrong_in_child(logging, 1); }).wait(); });
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, ForkWhileThreadsLog, testing::Values(Path::kNarrow, Path::kIcu, Path::kCatalog),
                         name_of_path);

bool fork_and_log(unsigned /*entry_id*/, unsigned /*mask*/, unsigned /*level*/, const qz_LOG_LogEntry& /*entry*/,
                  void* logging) {
  return ChildProcess([&] { return wrong_in_child(*static_cast<Logging*>(logging), 1); }).wait() == 0;
}

TEST(ForkInCallback, OfAFilter_ParentAndChildGoOn) {
  Logging logging(Path::kIcu);
  const LoggingThreads threads(logging, kThreads);
  const _qz_LOG_entry_filter filter = {fork_and_log, &logging, 0xFFFFFFFFU, 0, 9, "app", false, false};
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(filter.check_entry(qz_LOG_LogEntry(1, 1)));
  EXPECT_EQ(logging.wrong_entries(1, kEntries), 0);
}

class ForkingVisitor : public qz_LOG_AttributeVisitor {
 public:
  explicit ForkingVisitor(const Logging& logging) : logging_(logging) {}
  void VisitBool(const char*, qz_AttributeType, bool) override {}
  void VisitUnsigned(const char*, qz_AttributeType, unsigned) override {
    status_ = ChildProcess([&] { return wrong_in_child(logging_, 1); }).wait();
  }
  void VisitSigned(const char*, qz_AttributeType, int) override {}
  void VisitFloat(const char*, qz_AttributeType, double) override {}
  void VisitText(const char*, qz_AttributeType, const char*, unsigned) override {}
  void VisitTime(const char*, qz_AttributeType, const qz_Time&) override {}
  int status() const { return status_; }

 private:
  const Logging& logging_;
  int status_ = -1;
};

TEST(ForkInCallback, OfAVisitor_ParentAndChildGoOn) {
  const Logging logging(Path::kNarrow);
  const LoggingThreads threads(logging, kThreads);
  qz_LOG_LogEntry entry(1, 1);
  entry.AddAttrib4u("Count", 1);
  ForkingVisitor visitor(logging);
  entry.VisitAttributes(visitor);
  EXPECT_EQ(visitor.status(), 0);
}

}  // namespace
}  // namespace qz_test
