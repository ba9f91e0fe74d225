// Readers that share a stream of NATS, through the functions of the plug-in, from servers that this starts.
#include <gtest/gtest.h>
#include <nats/nats.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
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
    NatsReaderPeer gone(server_->address(), in_group(), waits(3600));  // who ends gives back what is not settled
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

TEST_F(NatsGroup, AGroupThatIsDeleted_IsNotBegunAgain) {
  writer_->send(1, 20);
  NatsReaderPeer reader(server_->address(), in_group(true));
  ASSERT_TRUE(reader.settle(reader.read(10))) << reader.error();
  natsConnection* connection = nullptr;
  jsCtx* context = nullptr;
  ASSERT_EQ(natsConnection_ConnectTo(&connection, ("nats://" + server_->address()).c_str()), NATS_OK);
  ASSERT_EQ(natsConnection_JetStream(&context, connection, nullptr), NATS_OK);
  ASSERT_EQ(js_DeleteConsumer(context, "S", "g", nullptr, nullptr), NATS_OK);
  jsCtx_Destroy(context);
  natsConnection_Destroy(connection);
  EXPECT_TRUE(reader.read_all(true, Milliseconds(60000)).empty());
  EXPECT_EQ(reader.outcome, QZLOG_NEVER);
  EXPECT_EQ(reader.error(), "the group 'g' was deleted");
}

TEST_F(NatsGroup, TheRightsThatThePageNames_AreEnough) {
  std::ofstream(folder_.path("rights.conf")) << R"(authorization { users = [
    {user: w, password: p, permissions: {publish: ["S.>", "$JS.API.STREAM.INFO.S", "$JS.API.STREAM.CREATE.S"],
                                         subscribe: "_INBOX.>"}}
    {user: r, password: p, permissions: {publish: ["$JS.API.STREAM.INFO.S", "$JS.API.CONSUMER.>", "$JS.ACK.S.>"],
                                         subscribe: "_INBOX.>"}} ] })";
  for (const char* const user : {"w", "r"}) {
    std::ofstream(folder_.path(user)) << "user = " << user << "\npassword = p\n";
  }
  server_ = std::make_unique<qz_test::NatsServer>(folder_.path("other"),
                                                  std::vector<std::string>{"-js", "-c", folder_.path("rights.conf")},
                                                  qz_test::NatsServer::free_port());
  ASSERT_TRUE(server_->start());
  NatsWriter writer(server_->address(), {{"create", "yes"}, {"credentials", folder_.path("w")}});
  writer.send(1, 20);
  EXPECT_EQ(NatsReaderPeer(server_->address(), {}, {{"credentials", folder_.path("r")}}).read_all().size(), 20U);
  NatsReaderPeer grouped(server_->address(), in_group(), {{"credentials", folder_.path("r")}});
  EXPECT_EQ(grouped.read_all(true).size(), 20U) << grouped.error();
}

/// Three servers whose stream has three replicas.
class NatsClusterReading : public NatsGroup {
 protected:
  void SetUp() override {
    if (!qz_test::NatsServer::is_installed()) GTEST_SKIP() << "nats-server is not installed";
    std::vector<std::string> routes;
    std::string list;
    for (int number = 0; number < 3; ++number) {
      routes.push_back("nats://127.0.0.1:" + std::to_string(qz_test::NatsServer::free_port()));
      list += (number == 0 ? "" : ",") + routes.back();
    }
    for (int number = 0; number < 3; ++number) {
      const std::string name = "n" + std::to_string(number);
      const std::vector<std::string> arguments = {
          "-js",      "-n", name, "--cluster_name", "C", "--cluster", routes[static_cast<std::size_t>(number)],
          "--routes", list};
      servers_.push_back(
          std::make_unique<qz_test::NatsServer>(folder_.path(name), arguments, qz_test::NatsServer::free_port()));
      ASSERT_TRUE(servers_.back()->start());
      addresses_ += (number == 0 ? "" : ",") + servers_.back()->address();
    }
    writer_ = std::make_unique<NatsWriter>(
        addresses_, std::vector<std::pair<std::string, std::string>>{{"create", "yes"}, {"replicas", "3"}});
    writer_->send(1, kRecords);
  }
  /// One after the other is killed and started, while it is read.
  void read_while_one_is_killed(NatsReaderPeer& reader, const std::function<void(std::vector<ReadRecord>)>& take) {
    std::thread reading([&] {
      const auto end = std::chrono::steady_clock::now() + Milliseconds(60000);
      while (!reader.at_end && reader.outcome != QZLOG_NEVER && std::chrono::steady_clock::now() < end) {
        take(reader.read(20));
        std::this_thread::sleep_for(Milliseconds(10));
      }
    });
    for (int round = 0; round < quick_or_long(1, 9); ++round) {
      std::this_thread::sleep_for(Milliseconds(300));
      servers_[static_cast<std::size_t>(round % 3)]->kill();
      std::this_thread::sleep_for(Milliseconds(quick_or_long(700, 3000)));
      EXPECT_TRUE(servers_[static_cast<std::size_t>(round % 3)]->start());
    }
    reading.join();
  }

  static constexpr int kRecords = 1500;
  std::vector<std::unique_ptr<qz_test::NatsServer>> servers_;
  std::string addresses_;
};

TEST_F(NatsClusterReading, OneOfThreeIsKilled_WhoReadsAloneHasEachRecordOnceInItsOrder) {
  NatsReaderPeer reader(addresses_, {});
  std::uint64_t last = 0;
  read_while_one_is_killed(reader, [&](const std::vector<ReadRecord>& some) {
    for (const ReadRecord& record : some) EXPECT_EQ(record.identity, std::to_string(++last));
  });
  EXPECT_TRUE(reader.at_end) << reader.error();
  EXPECT_EQ(last, static_cast<std::uint64_t>(kRecords));
}

TEST_F(NatsClusterReading, OneOfThreeIsKilled_AGroupLosesNothing_AndDoublesSayThatTheyAre) {
  NatsReaderPeer reader(addresses_, in_group(), waits(1));
  std::map<std::string, int> counts;
  int silent_doubles = 0;
  read_while_one_is_killed(reader, [&](const std::vector<ReadRecord>& some) {
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
