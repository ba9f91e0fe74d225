#include "tools/transport/received_feed.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

using State = ReceivedFeed::State;

/// What calls return is told beforehand.
class ToldReader : public RecordReader {
 public:
  struct Answer {
    qzlog_outcome outcome = QZLOG_DONE;
    std::size_t count = 0;
    bool at_end = false;
    std::string reason = {};
  };

  qzlog_outcome read(std::chrono::milliseconds /*timeout*/, ReadRecords& read, std::string& reason) override {
    const Answer answer = take(reads);
    records_.assign(answer.count, qzlog_received{});
    read = {records_, answer.at_end};
    reason = answer.reason;
    return answer.outcome;
  }
  qzlog_outcome settle(std::span<const std::uint64_t> tokens, std::chrono::milliseconds /*timeout*/,
                       std::string& reason) override {
    settled.emplace_back(tokens.begin(), tokens.end());
    const Answer answer = take(settles);
    reason = answer.reason;
    return answer.outcome;
  }

  std::deque<Answer> reads;
  std::deque<Answer> settles;
  std::vector<std::vector<std::uint64_t>> settled;

 private:
  static Answer take(std::deque<Answer>& answers) {
    if (answers.empty()) return {};
    Answer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  std::vector<qzlog_received> records_;
};

class ReceivedFeedTest : public ::testing::Test {
 protected:
  ToldReader reader_;
  std::vector<std::string> warnings_;
  ReceivedFeed feed_{
      {.from = "x://h", .back_off = {std::chrono::milliseconds(1), std::chrono::milliseconds(2)}, .settle_attempts = 3},
      {.reader = reader_,
       .warn = [this](const std::string& text) { warnings_.push_back(text); },
       .is_ending = [] { return false; }}};
};

TEST_F(ReceivedFeedTest, States_AreThoseOfTheReceiver) {
  reader_.reads = {{.count = 2}, {}, {.count = 1, .at_end = true}, {.at_end = true}};
  EXPECT_EQ(feed_.next(), State::kRecords);
  EXPECT_EQ(feed_.records().size(), 2U);
  EXPECT_EQ(feed_.next(), State::kNothing);
  EXPECT_EQ(feed_.records().size(), 0U);
  EXPECT_EQ(feed_.next(), State::kRecords);
  EXPECT_EQ(feed_.next(), State::kEnd);
}

TEST_F(ReceivedFeedTest, ReceiverThatIsAway_IsToldOnceAndWaitedFor) {
  reader_.reads = {{.outcome = QZLOG_LATER, .reason = "away"},
                   {.outcome = QZLOG_LATER, .reason = "away"},
                   {.outcome = QZLOG_LATER, .count = 3, .reason = "refused"},
                   {.count = 1},
                   {.outcome = QZLOG_LATER, .reason = "refused"}};
  for (int count = 0; count < 3; ++count) {
    EXPECT_EQ(feed_.next(), State::kNothing);
    EXPECT_EQ(feed_.records().size(), 0U);
  }
  EXPECT_EQ(feed_.next(), State::kRecords);
  EXPECT_EQ(feed_.next(), State::kNothing);
  EXPECT_EQ(warnings_,
            (std::vector<std::string>{"x://h: away; it is tried again", "x://h: refused; it is tried again",
                                      "x://h: entries are read again", "x://h: refused; it is tried again"}));
}

TEST_F(ReceivedFeedTest, WhatNeverWorks_EndsTheCommand) {
  reader_.reads = {{.outcome = QZLOG_NEVER, .reason = "no stream"}};
  try {
    feed_.next();
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), kExitCannotRun);
    EXPECT_STREQ(error.what(), "x://h: no stream");
  }
  reader_.settles = {{.outcome = QZLOG_NEVER, .reason = "no rights"}};
  const std::uint64_t token = 4;
  EXPECT_THROW(feed_.settle({&token, 1}), CommandError);
}

TEST_F(ReceivedFeedTest, Settling_IsTriedAFewTimesAndThenTold) {
  const std::vector<std::uint64_t> tokens = {4, 5};
  reader_.settles = {{.outcome = QZLOG_LATER, .reason = "away"}, {}};
  feed_.settle(tokens);
  EXPECT_EQ(reader_.settled, (std::vector<std::vector<std::uint64_t>>{tokens, tokens}));
  EXPECT_TRUE(warnings_.empty());
  reader_.settles = {{.outcome = QZLOG_LATER, .reason = "away"},
                     {.outcome = QZLOG_LATER, .reason = "away"},
                     {.outcome = QZLOG_LATER, .reason = "away"}};
  feed_.settle(tokens);
  EXPECT_EQ(reader_.settled.size(), 5U);
  EXPECT_EQ(warnings_, std::vector<std::string>{"x://h: away; what was read last comes again"});
  feed_.settle({});
  EXPECT_EQ(reader_.settled.size(), 5U);
}

}  // namespace
}  // namespace qzlog_tool
