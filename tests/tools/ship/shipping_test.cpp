#include "tools/ship/shipping.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>

#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

/// A file of numbered lines.
class Lines : public LineSource {
 public:
  explicit Lines(int count) : left_(count) {}

  std::vector<std::string> missing() override { return {}; }
  bool read(LineTaker& taker) override {
    for (; left_ > 0; --left_) {
      const std::uint64_t next = position_ + 10;
      const std::string line = R"({"writer":"w","seq":)" + std::to_string(next / 10) + R"(,"id":1})";
      if (!taker.take(line, LineVerdict(), {&file, position_, next})) return false;
      position_ = next;
    }
    return true;
  }
  void wait() override {}
  void look_for_files() override {}
  std::vector<SeriesState> places() override { return {{"/l/s", {{{20261121, 1}, file.settled, file.identity}}}}; }
  std::vector<ShipMetrics::Series> progress() override { return {}; }

  FileProgress file;

 private:
  int left_;
  std::uint64_t position_ = 0;
};

/// Does with each attempt what the next step says; with those behind the last one, acknowledges.
class Receiver : public BatchSender {
 public:
  using Step = std::function<qzlog_outcome(std::span<qzlog_result> results, std::string& reason)>;

  qzlog_outcome send(std::span<const qzlog_record> records, std::chrono::milliseconds /*timeout*/,
                     std::span<qzlog_result> results, std::string& reason) override {
    for (const qzlog_record& record : records) sent.append(record.identity.bytes, record.identity.size).append(" ");
    sent += "| ";
    qzlog_outcome outcome = QZLOG_DONE;
    if (steps.empty()) {
      for (qzlog_result& result : results) result.fate = QZLOG_ACKNOWLEDGED;
    } else {
      outcome = steps.front()(results, reason);
      steps.pop_front();
    }
    return outcome;
  }

  std::deque<Step> steps;
  std::string sent;
};

qzlog_outcome fail(qzlog_outcome outcome, std::string& reason) {
  reason = "it is so";
  return outcome;
}

class ShippingTest : public ::testing::Test {
 protected:
  Shipping::End run() {
    Shipping::Settings settings;
    settings.to = "test://x";
    settings.once = true;
    settings.batch.records = 3;
    settings.back_off = {std::chrono::milliseconds(1), std::chrono::milliseconds(2)};
    settings.end_wait = std::chrono::milliseconds(20);
    Shipping shipping(settings, {.source = lines_,
                                 .sender = receiver_,
                                 .state = state_,
                                 .dead_letters = dead_letters_,
                                 .metrics = metrics_,
                                 .identities = identities_,
                                 .known = known_,
                                 .judge = nullptr,
                                 .report = [](bool) {},
                                 .stop_signal = [this] { return signal_; }});
    return shipping.run();
  }
  std::uint64_t settled() { return state_.read()->series.at(0).places.at(0).offset; }

  qz_test::TempDir folder_;
  Lines lines_{5};
  Receiver receiver_;
  StateFile state_{folder_.path("state")};
  DeadLetters dead_letters_{folder_.path("dead"), "test://x"};
  ShipMetrics metrics_;
  RecordIdentity identities_{"host"};
  KnownDefinitions known_;
  int signal_ = 0;
};

TEST_F(ShippingTest, Batches_GoOneAfterTheOther) {
  EXPECT_TRUE(run().all_settled);
  EXPECT_EQ(receiver_.sent, "w/1 w/2 w/3 | w/4 w/5 | ");
  EXPECT_EQ(settled(), 50U);
  EXPECT_EQ(metrics_.acknowledged, 5U);
  EXPECT_EQ(metrics_.batches, 2U);
}

TEST_F(ShippingTest, WhatIsNotAcknowledged_IsSentAgainAlone) {
  receiver_.steps.push_back([](std::span<qzlog_result> results, std::string& reason) {
    results[1].fate = QZLOG_ACKNOWLEDGED;
    return fail(QZLOG_LATER, reason);
  });
  receiver_.steps.push_back([](std::span<qzlog_result> results, std::string&) {
    results[0].fate = QZLOG_DOUBLE;
    return QZLOG_DONE;
  });
  EXPECT_TRUE(run().all_settled);
  EXPECT_EQ(receiver_.sent, "w/1 w/2 w/3 | w/1 w/3 | w/3 | w/4 w/5 | ");
  EXPECT_EQ(settled(), 50U);
  EXPECT_EQ(metrics_.doubles, 1U);
  EXPECT_EQ(metrics_.sent_again, 3U);
  EXPECT_EQ(metrics_.failures, 1U);
  EXPECT_EQ(metrics_.acknowledged, 5U);
}

TEST_F(ShippingTest, StateDuringAnAttempt_HasNothingOfTheBatch) {
  receiver_.steps.push_back([this](std::span<qzlog_result> results, std::string&) {
    EXPECT_EQ(settled(), 0U);
    for (qzlog_result& result : results) result.fate = QZLOG_ACKNOWLEDGED;
    return QZLOG_DONE;
  });
  receiver_.steps.push_back([this](std::span<qzlog_result> results, std::string&) {
    EXPECT_EQ(settled(), 30U);
    for (qzlog_result& result : results) result.fate = QZLOG_ACKNOWLEDGED;
    return QZLOG_DONE;
  });
  run();
}

TEST_F(ShippingTest, RefusedRecord_IsADeadLetterAndSettled) {
  receiver_.steps.push_back([](std::span<qzlog_result> results, std::string&) {
    results[0] = {QZLOG_REFUSED, "too large"};
    results[1] = {QZLOG_REFUSED, nullptr};
    results[2].fate = QZLOG_ACKNOWLEDGED;
    return QZLOG_DONE;
  });
  EXPECT_TRUE(run().all_settled);
  EXPECT_EQ(settled(), 50U);
  const std::string dead = folder_.read("dead");
  EXPECT_NE(dead.find(R"("reason":"too large")"), std::string::npos) << dead;
  EXPECT_NE(dead.find(R"("identity":"w/1")"), std::string::npos) << dead;
  EXPECT_NE(dead.find(R"("reason":"the receiver refuses it")"), std::string::npos) << dead;
  EXPECT_EQ(metrics_.dead_letters, 2U);
  EXPECT_EQ(metrics_.acknowledged, 3U);
}

TEST_F(ShippingTest, ReceiverThatNeverWill_EndsItWithWhatWasAcknowledgedKept) {
  receiver_.steps.push_back([](std::span<qzlog_result> results, std::string& reason) {
    results[0].fate = QZLOG_ACKNOWLEDGED;
    results[2].fate = QZLOG_ACKNOWLEDGED;
    return fail(QZLOG_NEVER, reason);
  });
  try {
    run();
    ADD_FAILURE();
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "test://x: it is so");
    EXPECT_EQ(error.exit_status(), kExitCannotRun);
  }
  EXPECT_EQ(settled(), 10U);
}

TEST_F(ShippingTest, Signal_LetsTheBatchBeTriedForAWhile) {
  for (int attempt = 0; attempt < 1000; ++attempt) {
    receiver_.steps.push_back([this](std::span<qzlog_result> results, std::string& reason) {
      signal_ = 15;
      results[0].fate = QZLOG_ACKNOWLEDGED;
      return results.size() == 3 ? fail(QZLOG_LATER, reason) : (results[0].fate = QZLOG_AGAIN, QZLOG_DONE);
    });
  }
  const Shipping::End end = run();
  EXPECT_FALSE(end.all_settled);
  EXPECT_EQ(end.signal, 15);
  EXPECT_EQ(settled(), 10U);
  EXPECT_GT(receiver_.steps.size(), 900U);
  EXPECT_EQ(receiver_.sent.find("w/4"), std::string::npos);
}

TEST_F(ShippingTest, SignalWhileTheReceiverIsAway_LeavesTheBatchAtOnce) {
  receiver_.steps.push_back([this](std::span<qzlog_result>, std::string& reason) {
    signal_ = 15;
    return fail(QZLOG_LATER, reason);
  });
  EXPECT_FALSE(run().all_settled);
  EXPECT_EQ(receiver_.sent, "w/1 w/2 w/3 | ");
}

}  // namespace
}  // namespace qzlog_tool
