#include "qzlog/split_sink.h"

#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;

class SplitSink : public SinksTest {
 protected:
  SplitSink() {
    std::vector<std::unique_ptr<qz_LOG_Sink>> sinks;
    for (ScriptedSink*& inner : inner_) {
      inner = new ScriptedSink;
      sinks.emplace_back(inner);
    }
    sink_ = std::make_unique<qz_LOG_SplitSink>(std::move(sinks));
  }

  ScriptedSink* inner_[3];
  std::unique_ptr<qz_LOG_SplitSink> sink_;
};

TEST_F(SplitSink, EachSink_GetsTheEntry) {
  EXPECT_TRUE(sink_->Write(make_entry(), false, 4));
  for (const ScriptedSink* const inner : inner_) EXPECT_EQ(inner->selectors, std::vector<unsigned>({4}));
  EXPECT_EQ(counts_of(*sink_), "1/0/0");
  EXPECT_EQ(sink_->GetSinkCount(), 3U);
  EXPECT_EQ(&sink_->GetSink(1), inner_[1]);
}

TEST_F(SplitSink, OneThatFails_KeepsNoOtherFromItsEntry) {
  inner_[0]->fail();
  inner_[1]->on_write = [](const qz_LOG_LogEntry&) -> ScriptedSink::Outcome { throw 1; };
  EXPECT_FALSE(write_to(*sink_));
  EXPECT_EQ(counts_of(*inner_[2]), "1/0/0");
  EXPECT_EQ(counts_of(*sink_), "0/1/0");
}

TEST_F(SplitSink, OneThatDoesNotWantIt_DoesNotCount_AllOfThemDo) {
  inner_[0]->SetWanted(7, qz_LOG_Sink::kEveryMask);
  EXPECT_TRUE(write_to(*sink_, kDisk, 5));
  inner_[1]->SetWanted(7, qz_LOG_Sink::kEveryMask);
  inner_[2]->SetWanted(0, 4);
  EXPECT_FALSE(write_to(*sink_, kDisk, 5));
  EXPECT_TRUE(write_to(*sink_, kOther, 5));
  inner_[2]->fail();
  EXPECT_FALSE(write_to(*sink_, kOther, 5));
  EXPECT_EQ(counts_of(*sink_), "2/1/1");
}

TEST_F(SplitSink, FlushAndClose_ReachEach) {
  EXPECT_TRUE(sink_->Flush(5));
  inner_[0]->flush_result = false;
  EXPECT_FALSE(sink_->Flush(5));
  inner_[0]->left = 2;
  inner_[2]->left = 5;
  EXPECT_EQ(sink_->Close(5), 7U);
  for (const ScriptedSink* const inner : inner_) {
    EXPECT_EQ(inner->flushes, 2U);
    EXPECT_EQ(inner->closes, 1U);
  }
}

TEST_F(SplitSink, NoSinks_AreRefused) {
  EXPECT_EQ(thrown_by([] { qz_LOG_SplitSink({}); }), thrown<QZX_logging_illegal_argument>("sinks: there is none"));
  EXPECT_EQ(thrown_by([] {
              std::vector<std::unique_ptr<qz_LOG_Sink>> sinks;
              sinks.emplace_back(new ScriptedSink);
              sinks.emplace_back();
              qz_LOG_SplitSink(std::move(sinks));
            }),
            thrown<QZX_logging_illegal_argument>("sinks: one is null"));
}

}  // namespace
