// Reading streams of NATS alone, through the functions of the plug-in, from servers that this starts.
#include <gtest/gtest.h>
#include <nats/nats.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/ship/nats_reading_fixture.h"

namespace qzlog_test {
namespace {

std::string numbers(int first, int last) {
  std::string text;
  for (int number = first; number <= last; ++number) text += (number == first ? "" : " ") + std::to_string(number);
  return text;
}

// Also in the first tenth of a second, and before all of them.
TEST_F(NatsReading, TimesOfEachTenthOfASecond_AreWhereReadingBegins) {
  for (int number = 1; number <= 60; ++number) {
    writer_->send(number, number);
    std::this_thread::sleep_for(Milliseconds(20));
  }
  const std::vector<ReadRecord> all = NatsReaderPeer(server_->address(), {}).read_all();
  ASSERT_EQ(all.size(), 60U);
  From from;
  from.kind = QZLOG_FROM_TIME;
  for (std::size_t index = 0; index < all.size(); ++index) {
    from.nanoseconds = all[index].nanoseconds;
    EXPECT_EQ(NatsReaderPeer(server_->address(), from).read_all().size(), all.size() - index) << from.nanoseconds;
  }
  for (const std::int64_t early : {INT64_MIN, std::int64_t{-1}, std::int64_t{0}, std::int64_t{1}}) {
    from.nanoseconds = early;
    EXPECT_EQ(NatsReaderPeer(server_->address(), from).read_all().size(), all.size()) << early;
  }
}

TEST_F(NatsReading, Records_ComeBackFromWhereverTheyAreReadFrom) {
  writer_->send(1, 4);
  const std::vector<ReadRecord> all = NatsReaderPeer(server_->address(), {}).read_all();
  ASSERT_EQ(identities_of(all), "1 2 3 4");
  for (std::size_t index = 0; index < all.size(); ++index) {
    EXPECT_EQ(all[index].line, all[index].identity);
    EXPECT_EQ(all[index].sequence, index + 1);
    EXPECT_FALSE(all[index].again);
  }
  From from;
  from.kind = QZLOG_FROM_SEQUENCE;
  from.sequence = 3;
  EXPECT_EQ(identities_of(NatsReaderPeer(server_->address(), from).read_all()), "3 4");
  from.sequence = 9;
  EXPECT_EQ(identities_of(NatsReaderPeer(server_->address(), from).read_all()), "");
  from.kind = QZLOG_FROM_TIME;
  from.nanoseconds = all[2].nanoseconds;
  EXPECT_EQ(identities_of(NatsReaderPeer(server_->address(), from).read_all()), "3 4");
  from.kind = QZLOG_FROM_NOW;
  NatsReaderPeer none(server_->address(), from);
  EXPECT_EQ(identities_of(none.read_all()), "");
  EXPECT_TRUE(none.at_end) << none.error();
}

TEST_F(NatsReading, RandomHostileLines_ComeBackEqual) {
  qz_test::SeededRandom random;
  std::vector<std::string> identities;
  std::vector<std::string> lines;
  for (int number = 0; number < 20000; ++number) {
    identities.push_back("h/1/2/" + std::to_string(number));
    lines.push_back(random.text(random.one_in(200) ? random.below(200000) : random.below(300)));
    for (char& character : lines.back()) character = character == '\n' ? '\0' : character;
  }
  EXPECT_EQ(writer_->send(identities, lines), 0U);
  const std::vector<ReadRecord> read = NatsReaderPeer(server_->address(), {}).read_all();
  ASSERT_EQ(read.size(), lines.size());
  for (std::size_t index = 0; index < lines.size(); ++index) {
    ASSERT_EQ(read[index].identity, identities[index]);
    ASSERT_TRUE(read[index].line == lines[index]) << index;
  }
}

TEST_F(NatsReading, TheEnd_IsWhereItWasAtOpening) {
  writer_->send(1, 3);
  NatsReaderPeer reader(server_->address(), {});
  writer_->send(4, 2000);
  EXPECT_EQ(identities_of(reader.read_all()), "1 2 3");
  EXPECT_TRUE(reader.at_end);
}

TEST_F(NatsReading, WhoFollows_GetsWhatComesLater) {
  writer_->send(1, 1);
  From from;
  from.kind = QZLOG_FROM_NOW;
  from.follows = true;
  NatsReaderPeer reader(server_->address(), from);
  EXPECT_TRUE(reader.read(10, 100).empty());
  EXPECT_FALSE(reader.at_end);
  writer_->send(2, 3);
  EXPECT_EQ(identities_of(reader.read_all(false, Milliseconds(1000))), "2 3");
}

TEST_F(NatsReading, WhatCameWhileTheConnectionWasLost_IsReadFromNowOnToo) {
  writer_->send(1, 2);
  From from;
  from.kind = QZLOG_FROM_NOW;
  from.follows = true;
  NatsReaderPeer reader(server_->address(), from);
  server_->kill();
  EXPECT_TRUE(reader.read(10, 2000).empty());
  EXPECT_EQ(reader.outcome, QZLOG_LATER);
  ASSERT_TRUE(server_->start());
  writer_->send(3, 5);
  EXPECT_EQ(identities_of(reader.read_all(false, Milliseconds(1500))), "3 4 5") << reader.error();
}

TEST_F(NatsReading, AServerKilledAndStarted_EachRecordComesOnceInItsOrder) {
  constexpr int kRecords = 4000;
  writer_->send(1, kRecords);
  NatsReaderPeer reader(server_->address(), {});
  std::vector<ReadRecord> all;
  read_while_killed(reader,
                    [&](const std::vector<ReadRecord>& some) { all.insert(all.end(), some.begin(), some.end()); });
  EXPECT_TRUE(identities_of(all) == numbers(1, kRecords)) << all.size() << ' ' << reader.error();
}

TEST_F(NatsReading, AStreamMadeAnew_IsNotGoneOnWith) {
  writer_->send(1, 50);
  From from;
  from.follows = true;
  NatsReaderPeer reader(server_->address(), from);
  std::size_t count = 0;
  while (count < 50 && reader.outcome == QZLOG_DONE) count += reader.read().size();
  ASSERT_EQ(count, 50U) << reader.error();
  const int port = server_->port();
  server_ = std::make_unique<qz_test::NatsServer>(folder_.path("other"), std::vector<std::string>{"-js"}, port);
  ASSERT_TRUE(server_->start());
  writer_->send(51, 60);
  reader.read_all(false, Milliseconds(60000));
  EXPECT_EQ(reader.outcome, QZLOG_NEVER);
  EXPECT_EQ(reader.error(), "the stream 'S' ends before what was read of it: it was made anew; start again to read it");
}

TEST_F(NatsReading, WhatWasDroppedBeforeItWasRead_IsToldOf) {
  writer_->send(1, 50);
  NatsReaderPeer reader(server_->address(), {});
  EXPECT_EQ(reader.read(10).size(), 10U);
  natsConnection* connection = nullptr;
  jsCtx* context = nullptr;
  ASSERT_EQ(natsConnection_ConnectTo(&connection, ("nats://" + server_->address()).c_str()), NATS_OK);
  ASSERT_EQ(natsConnection_JetStream(&context, connection, nullptr), NATS_OK);
  jsOptions options;
  jsOptions_Init(&options);
  options.Stream.Purge.Sequence = 41;
  ASSERT_EQ(js_PurgeStream(context, "S", &options, nullptr), NATS_OK);
  jsCtx_Destroy(context);
  natsConnection_Destroy(connection);
  EXPECT_EQ(identities_of(reader.read_all()), numbers(41, 50));
  EXPECT_EQ(reader.warnings(), "the stream 'S' dropped records before they were read");
}

TEST_F(NatsReading, WhatCannotBeOpened_IsToldWithTheNextStep) {
  const auto told = [&](const From& from, const std::vector<std::pair<std::string, std::string>>& options = {}) {
    const NatsReaderPeer reader(server_->address(), from, options);
    return std::to_string(reader.outcome) + ' ' + reader.error();
  };
  EXPECT_EQ(told({}),
            "2 there is no stream 'S': look at the name in the URL; who ships makes it, with --option create=yes");
  writer_->send(1, 1);
  From from;
  from.group = "a b";
  EXPECT_EQ(told(from), "2 a group is named by up to 64 letters, digits, '-' and '_'");
  EXPECT_EQ(told({}, {{"colour", "red"}}), "2 there is no --option colour for this receiver; there are ack-wait");
  server_->kill();
  EXPECT_EQ(told({}).substr(0, 16), "1 cannot connect");
}

}  // namespace
}  // namespace qzlog_test
