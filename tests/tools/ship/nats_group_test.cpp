// Readers that share a stream of NATS, through the functions of the plug-in, from servers that this starts.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/ship/nats_reading_fixture.h"

namespace qzlog_test {
namespace {

class NatsGroup : public NatsReading {
 protected:
  static From in_group(bool follows = false) {
    From from;
    from.group = "g";
    from.follows = follows;
    return from;
  }
  static std::vector<std::pair<std::string, std::string>> waits(int seconds) {
    return {{"ack-wait", std::to_string(seconds)}};
  }
  static void add(const std::vector<ReadRecord>& records, std::map<std::string, int>& counts) {
    for (const ReadRecord& record : records) ++counts[record.identity];
  }
  static int most(const std::map<std::string, int>& counts) {
    int highest = 0;
    for (const auto& [identity, count] : counts) highest = std::max(highest, count);
    return highest;
  }
};

TEST_F(NatsGroup, TwoReaders_HaveEachRecordOnceBetweenThem) {
  writer_->send(1, 4000);
  NatsReaderPeer one(server_->address(), in_group());
  NatsReaderPeer other(server_->address(), in_group());
  std::vector<ReadRecord> parts[2];
  std::thread first([&] { parts[0] = one.read_all(true); });
  parts[1] = other.read_all(true);
  first.join();
  EXPECT_TRUE(one.at_end && other.at_end) << one.error() << other.error();
  EXPECT_GT(parts[0].size(), 400U);
  EXPECT_GT(parts[1].size(), 400U);
  std::map<std::string, int> counts;
  for (const auto& part : parts) add(part, counts);
  EXPECT_EQ(counts.size(), 4000U);
  EXPECT_EQ(most(counts), 1);
}

TEST_F(NatsGroup, WhatWasSettled_IsNotReadAgain_WhatWasNotIs) {
  writer_->send(1, 6);
  {
    NatsReaderPeer gone(server_->address(), in_group(), waits(1));
    std::vector<ReadRecord> read = gone.read(4);
    ASSERT_EQ(identities_of(read), "1 2 3 4");
    read.resize(2);
    ASSERT_TRUE(gone.settle(read)) << gone.error();
  }
  NatsReaderPeer reader(server_->address(), in_group());
  std::map<std::string, bool> again;
  for (const ReadRecord& record : reader.read_all(true)) again[record.identity] = record.again;
  EXPECT_EQ(again, (std::map<std::string, bool>{{"3", true}, {"4", true}, {"5", false}, {"6", false}}));
  EXPECT_EQ(identities_of(NatsReaderPeer(server_->address(), in_group()).read_all(true)), "");
}

TEST_F(NatsGroup, TheEnd_DoesNotWaitForOwnRecordsToBeSettled) {
  writer_->send(1, 10);
  NatsReaderPeer reader(server_->address(), in_group());
  const std::vector<ReadRecord> all = reader.read_all(false, Milliseconds(5000));
  EXPECT_EQ(all.size(), 10U);
  EXPECT_TRUE(reader.at_end);
  EXPECT_TRUE(reader.settle(all)) << reader.error();
}

TEST_F(NatsGroup, TheEnd_IsWhereItWasAtOpening_AndTheNextReaderGoesOnThere) {
  writer_->send(1, 30);
  NatsReaderPeer reader(server_->address(), in_group());
  writer_->send(31, 60);
  const std::vector<ReadRecord> all = reader.read_all(false, Milliseconds(5000));
  EXPECT_EQ(all.size(), 30U);
  EXPECT_TRUE(reader.at_end);
  EXPECT_TRUE(reader.settle(all)) << reader.error();
  reader.close();
  std::vector<ReadRecord> rest = NatsReaderPeer(server_->address(), in_group()).read_all(true);
  EXPECT_EQ(rest.size(), 30U);
}

TEST_F(NatsGroup, AReaderThatIsKilled_ItsPartIsTakenOver) {
  writer_->send(1, 1000);
  const pid_t child = ::fork();
  if (child == 0) {
    NatsReaderPeer killed(server_->address(), in_group(true), waits(1));
    const std::size_t read = killed.read(300).size();
    ::kill(read > 0 ? ::getpid() : ::getppid(), SIGKILL);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  NatsReaderPeer reader(server_->address(), in_group());
  std::map<std::string, int> counts;
  std::size_t again = 0;
  for (const ReadRecord& record : reader.read_all(true)) {
    ++counts[record.identity];
    again += record.again ? 1 : 0;
  }
  EXPECT_TRUE(reader.at_end) << reader.error();
  EXPECT_EQ(counts.size(), 1000U);
  EXPECT_EQ(most(counts), 1);
  EXPECT_GT(again, 0U);
}

TEST_F(NatsGroup, TheEnd_WaitsForAnotherReadersPart) {
  writer_->send(1, 10);
  auto gone = std::make_unique<NatsReaderPeer>(server_->address(), in_group(), waits(2));
  ASSERT_EQ(gone->read(5).size(), 5U);
  NatsReaderPeer reader(server_->address(), in_group());
  const std::vector<ReadRecord> first = reader.read_all(true, Milliseconds(300));
  EXPECT_EQ(first.size(), 5U);
  EXPECT_FALSE(reader.at_end);
  gone.reset();
  EXPECT_EQ(reader.read_all(true).size(), 5U);
  EXPECT_TRUE(reader.at_end);
}

TEST_F(NatsGroup, AServerKilledAndStarted_NothingIsLost_AndDoublesSayThatTheyAre) {
  constexpr int kRecords = 3000;
  writer_->send(1, kRecords);
  NatsReaderPeer reader(server_->address(), in_group(), waits(1));
  std::map<std::string, int> counts;
  int silent_doubles = 0;
  read_while_killed(reader, [&](const std::vector<ReadRecord>& some) {
    for (const ReadRecord& record : some) {
      if (++counts[record.identity] > 1 && !record.again) ++silent_doubles;
    }
    if (!some.empty()) reader.settle(some);
  });
  EXPECT_TRUE(reader.at_end) << reader.error();
  EXPECT_EQ(counts.size(), static_cast<std::size_t>(kRecords));
  EXPECT_EQ(silent_doubles, 0);
}

}  // namespace
}  // namespace qzlog_test
