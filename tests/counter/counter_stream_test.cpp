#include "counter/counter_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <new>

#include "qzlog/logentrycounter.h"
#include "tests/counter/counter_fixture.h"
#include "tests/support/resource_limit.h"

namespace {

using namespace qz_test;

/// While it lives, this process works for the user "nobody" with the superuser's rights, as a set-user-ID program does.
class RealUserNobody {
 public:
  RealUserNobody() : holds_(geteuid() == 0 && setresuid(kNobody, 0, 0) == 0) {}
  ~RealUserNobody() {
    if (holds_ && setresuid(0, 0, 0) != 0) ADD_FAILURE() << "the superuser's rights are lost";
    prctl(PR_SET_DUMPABLE, 1);  // a change of user switches it off; the leak checker needs it
  }
  RealUserNobody(const RealUserNobody&) = delete;
  RealUserNobody& operator=(const RealUserNobody&) = delete;

  bool holds() const { return holds_; }

 private:
  static constexpr uid_t kNobody = 65534;
  bool holds_;
};

class OpenCounterFaults : public CounterTest {
 protected:
  int open_days() { return counter_.OpenEntryCounterFile(folder_.path().c_str(), "days"); }
  // The limit ends before the exception is looked at: the sanitizers need a descriptor for that.
  void open_days_without_a_descriptor() {
    const DescriptorLimit limit(0);
    open_days();
  }
  void expect_open_without_a_descriptor_throws() {
    EXPECT_EQ(thrown_by([&] { open_days_without_a_descriptor(); }),
              thrown<QZX_logging_file_operation_failed>("Cannot open file with read mode!\n"));
  }
  void expect_not_opened() {
    EXPECT_EQ(counter_.GetFilePointer(), nullptr);
    EXPECT_FALSE(counter_.IsOpen());
    EXPECT_FALSE(counter_.IsWritable());
    EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
    EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 7, 5), 0);
  }
};

TEST_F(OpenCounterFaults, FolderThatTheRealUserCannotSearch_CountsAreKept) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3);
  write(bytes);
  chmod(folder_.path().c_str(), 0700);
  {
    const RealUserNobody user;
    if (!user.holds()) GTEST_SKIP() << "only the superuser can work for another user";
    EXPECT_EQ(open_days(), 0);
    EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  }
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 4)));
}

/// Two processes that meet at the start of each round.
class Rounds {
 public:
  Rounds() : Rounds(mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {}
  ~Rounds() { munmap(state_, sizeof(State)); }
  Rounds(const Rounds&) = delete;
  Rounds& operator=(const Rounds&) = delete;

  void meet() {
    const unsigned round = state_->arrived.fetch_add(1) / 2;
    while (state_->arrived.load() / 2 == round) sched_yield();
  }

 private:
  struct State {
    std::atomic<unsigned> arrived;
  };
  explicit Rounds(void* memory) : state_(new (memory) State{}) {}
  State* state_;
};

TEST_F(OpenCounterFaults, TwoProcessesThatCreateTheFileAtOnce_NoRecordIsLost) {
  constexpr unsigned kRounds = 2000;
  const auto name = [](unsigned round) { return "days" + std::to_string(round); };
  Rounds rounds;
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    for (unsigned round = 0; round < kRounds; ++round) {
      _qz_LOG_EntryCounter counter;
      rounds.meet();
      counter.OpenEntryCounterFile(folder_.path().c_str(), name(round).c_str());
    }
    _exit(0);
  }
  for (unsigned round = 0; round < kRounds; ++round) {
    _qz_LOG_EntryCounter counter;
    rounds.meet();
    EXPECT_EQ(counter.OpenEntryCounterFile(folder_.path().c_str(), name(round).c_str()), 0);
    EXPECT_EQ(counter.IncreaseCount(2020, 1, 1, 7), 0);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  unsigned lost = 0;
  for (unsigned round = 0; round < kRounds; ++round) {
    if (folder_.read(name(round) + ".cnt") != record_bytes(2020, 1, 1, 7, 1)) ++lost;
  }
  EXPECT_EQ(lost, 0U);
}

TEST_F(OpenCounterFaults, NoDescriptorLeftForAFileThatExists_Throws) {
  const std::string bytes = record_bytes(2020, 1, 1, 7, 3);
  write(bytes);
  expect_open_without_a_descriptor_throws();
  expect_not_opened();
  EXPECT_TRUE(holds(bytes));
}

TEST_F(OpenCounterFaults, NoDescriptorLeftForAFileThatIsMissing_NotOpenedAndNotMade) {
  {
    const DescriptorLimit limit(0);
    EXPECT_EQ(open_days(), 0);
  }
  expect_not_opened();
  EXPECT_FALSE(folder_.has("days.cnt"));
}

TEST_F(OpenCounterFaults, FolderThatMayNotBeChanged_ExistingCounterIsOpenedAndNoOtherIsMade) {
  write("");
  chmod(path().c_str(), 0666);
  chmod(folder_.path().c_str(), 0555);
  {
    const ReadOnlyFile user(folder_.path("none"));
    if (!user.holds()) GTEST_SKIP() << "this user may write any folder";
    EXPECT_EQ(open_days(), 0);
    EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
    EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 1)));
    EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), "other"), 0);
    expect_not_opened();
  }
  EXPECT_FALSE(folder_.has("other.cnt"));
}

TEST_F(OpenCounterFaults, FolderThatCannotBeSearched_NotOpenedAndNothingThrown) {
  write(record_bytes(2020, 1, 1, 7, 3));
  chmod(folder_.path().c_str(), 0);
  {
    const ReadOnlyFile user(folder_.path("none"));
    if (!user.holds()) GTEST_SKIP() << "this user may search any folder";
    EXPECT_EQ(open_days(), 0);
    expect_not_opened();
  }
  chmod(folder_.path().c_str(), 0755);
  EXPECT_TRUE(holds(record_bytes(2020, 1, 1, 7, 3)));
}

TEST_F(OpenCounterFaults, LinkToNowhere_ItsTargetIsMade) {
  std::filesystem::create_symlink("target.cnt", path());
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path()));
  EXPECT_EQ(folder_.read("target.cnt"), record_bytes(2020, 1, 1, 7, 1));
}

TEST_F(OpenCounterFaults, LinkIntoAMissingFolderOrToItself_NotOpened) {
  for (const char* target : {"missing/target.cnt", "days.cnt"}) {
    std::filesystem::create_symlink(target, path());
    EXPECT_EQ(open_days(), 0);
    expect_not_opened();
    std::filesystem::remove(path());
  }
}

TEST_F(OpenCounterFaults, Pipe_OpenDoesNotWaitAndEveryOperationFails) {
  ASSERT_EQ(mkfifo(path().c_str(), 0644), 0);
  open();
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), -1);
  EXPECT_EQ(counter_.UpdateEntryCount(2020, 1, 1, 7, 5), -1);
  EXPECT_EQ(counter_.DeleteEntryElement(2020, 1, 1, 7), -1);
  EXPECT_EQ(counter_.DeleteEntryElement(moment(1980, 1, 1), moment(2030, 12, 31)), -1);
}

TEST_F(OpenCounterFaults, PipeThatCanOnlyBeRead_OpenDoesNotWait) {
  ASSERT_EQ(mkfifo(path().c_str(), 0644), 0);
  const ReadOnlyFile read_only(path());
  if (!read_only.holds()) GTEST_SKIP() << "this user may write any file";
  alarm(20);  // ends the test program: there is no writer to wait for
  open();
  alarm(0);
  EXPECT_EQ(counter_.IncreaseCount(2020, 1, 1, 7), 0);
}

TEST_F(OpenCounterFaults, NotOpened_WritesADebugRecordOfLevelOne) {
  const std::string missing = folder_.path("missing");
  const DebugLogFile log(1);
  EXPECT_EQ(counter_.OpenEntryCounterFile(missing.c_str(), "days"), 0);
  EXPECT_EQ(counter_.OpenEntryCounterFile(nullptr, "days"), 0);
  EXPECT_EQ(counter_.OpenEntryCounterFile(missing.c_str(), nullptr), 0);
  const std::string null = "logentrycounter:# _qz_LOG_EntryCounter::OpenEntryCounterFile, directory==0 or name==0!\n";
  EXPECT_EQ(log.unnumbered_records(),
            Texts({"logentrycounter:# Error: Cannot create file " + missing + "/days.cnt!\n", null, null}));
}

TEST_F(OpenCounterFaults, IsOpenAndIsWritable_AsTheFileIs) {
  EXPECT_FALSE(counter_.IsOpen() || counter_.IsWritable());
  open();
  EXPECT_TRUE(counter_.IsOpen() && counter_.IsWritable());
  counter_.CloseEntryCounterFile();
  EXPECT_FALSE(counter_.IsOpen() || counter_.IsWritable());
  open();
  EXPECT_TRUE(counter_.IsOpen() && counter_.IsWritable());
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path("missing").c_str(), "days"), 0);
  EXPECT_FALSE(counter_.IsOpen() || counter_.IsWritable());
  std::filesystem::create_directory(folder_.path("other.cnt"));
  EXPECT_EQ(counter_.OpenEntryCounterFile(folder_.path().c_str(), "other"), 0);
  EXPECT_TRUE(counter_.IsOpen());
  EXPECT_FALSE(counter_.IsWritable());
}

TEST_F(OpenCounterFaults, OpenThatThrowsAfterAWritableOne_NeitherOpenNorWritable) {
  open();
  expect_open_without_a_descriptor_throws();
  expect_not_opened();
}

TEST_F(OpenCounterFaults, Opened_ClosedInAProgramThatIsStarted) {
  for (const bool exists : {false, true}) {
    open();
    EXPECT_EQ(fcntl(fileno(counter_.GetFilePointer()), F_GETFD), FD_CLOEXEC) << exists;
  }
}

TEST_F(OpenCounterFaults, FileThatIsMade_HasTheUsualRights) {
  const mode_t former = umask(027);
  open();
  umask(former);
  EXPECT_EQ(std::filesystem::status(path()).permissions(), std::filesystem::perms{0640});
}

}  // namespace
