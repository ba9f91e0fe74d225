#include "qzlog/filtered_sink.h"

#include <memory>

#include "qzlog/memory_sink.h"
#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;

_qz_LOG_entry_filter filter_of(unsigned low, unsigned high, const char* section = "app") {
  return {nullptr, nullptr, 0xFFFFFFFFU, low, high, section, false, false};
}

class FilteredSink : public SinksTest {
 protected:
  /// Makes `lines` the configuration source.
  void configure(const std::string& lines) {
    static int number = 0;
    const std::string name = "conf" + std::to_string(++number);
    qz_LOG_LogConfig::SetConfigurationSource(folder_.write(name, lines + "\n\n").c_str(), QZ_CONFIGURATION_FILE);
  }

  std::unique_ptr<ScriptedSink> owned_ = std::make_unique<ScriptedSink>();
  ScriptedSink& inner_ = *owned_;
};

TEST_F(FilteredSink, WhatPasses_IsHandedOn_TheRestIsHeldBack) {
  qz_LOG_FilteredSink sink(std::move(owned_), filter_of(3, 6));
  EXPECT_FALSE(write_to(sink, kDisk, 2));
  EXPECT_TRUE(write_to(sink, kDisk, 3));
  EXPECT_TRUE(sink.Write(make_entry(kDisk, 6), false, 9));
  EXPECT_FALSE(write_to(sink, kDisk, 7));
  EXPECT_EQ(counts_of(sink), "2/0/2");
  EXPECT_EQ(sink.GetCounts().dropped_by_level[7], 1U);
  EXPECT_EQ(counts_of(inner_), "2/0/0");
  EXPECT_EQ(inner_.selectors, std::vector<unsigned>({0, 9}));
  EXPECT_EQ(&sink.GetSink(), &inner_);
}

TEST_F(FilteredSink, WhatTheInnerSinkDoes_IsToldApart) {
  qz_LOG_FilteredSink sink(std::move(owned_), filter_of(0, 9));
  inner_.SetWanted(5, qz_LOG_Sink::kEveryMask);
  EXPECT_FALSE(write_to(sink, kDisk, 3));
  EXPECT_EQ(counts_of(sink), "0/0/1");
  inner_.fail();
  EXPECT_FALSE(write_to(sink, kDisk, 5));
  EXPECT_EQ(counts_of(sink), "0/1/1");
  inner_.on_write = [](const qz_LOG_LogEntry&) -> ScriptedSink::Outcome { throw 1; };
  EXPECT_FALSE(write_to(sink, kDisk, 5));
  EXPECT_EQ(counts_of(sink), "0/2/1");
}

TEST_F(FilteredSink, FilterInAFilter_HoldsBackForBoth) {
  std::unique_ptr<qz_LOG_Sink> middle(new qz_LOG_FilteredSink(std::move(owned_), filter_of(5, 9)));
  qz_LOG_FilteredSink sink(std::move(middle), filter_of(0, 9));
  EXPECT_FALSE(write_to(sink, kDisk, 3));
  EXPECT_EQ(counts_of(sink), "0/0/1");
  EXPECT_EQ(counts_of(sink.GetSink()), "0/0/1");
  EXPECT_EQ(counts_of(inner_), "0/0/0");
}

TEST_F(FilteredSink, Section_IsCopiedAndItsValuesCount) {
  std::string section = "console";
  qz_LOG_FilteredSink sink(std::move(owned_), filter_of(0, 9, section.c_str()));
  section = "another";
  EXPECT_TRUE(write_to(sink, kDisk, 3));
  configure("[console]\nLogLevelLow = 4\n[another]\nLogLevelLow = 9\n");
  EXPECT_FALSE(write_to(sink, kDisk, 3));
  EXPECT_TRUE(write_to(sink, kDisk, 4));
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
  EXPECT_TRUE(write_to(sink, kDisk, 3));
}

TEST_F(FilteredSink, NullSection_IsAllowed) {
  qz_LOG_FilteredSink sink(std::move(owned_), filter_of(0, 9, nullptr));
  configure("[global]\nLogLevelLow = 4\n");
  EXPECT_FALSE(write_to(sink, kDisk, 3));
  EXPECT_TRUE(write_to(sink, kDisk, 4));
}

TEST_F(FilteredSink, CallbackThatThrows_FailsTheEntry) {
  _qz_LOG_entry_filter filter = filter_of(0, 9);
  bool throws = true;
  filter.user_data = &throws;
  filter.callback = [](unsigned, unsigned, unsigned, const qz_LOG_LogEntry&, void* user_data) {
    if (*static_cast<bool*>(user_data)) throw 1;
    return true;
  };
  qz_LOG_FilteredSink sink(std::move(owned_), filter);
  EXPECT_FALSE(write_to(sink));
  throws = false;
  EXPECT_TRUE(write_to(sink));
  EXPECT_EQ(counts_of(sink), "1/1/0");
}

TEST_F(FilteredSink, FlushAndClose_AreThoseOfTheInnerSink) {
  bool destroyed = false;
  inner_.destroyed = &destroyed;
  inner_.left = 3;
  {
    qz_LOG_FilteredSink sink(std::move(owned_), filter_of(0, 9));
    EXPECT_TRUE(sink.Flush(5));
    inner_.flush_result = false;
    EXPECT_FALSE(sink.Flush(5));
    EXPECT_EQ(sink.Close(5), 3U);
    EXPECT_EQ(inner_.flushes, 2U);
    EXPECT_EQ(inner_.closes, 1U);
  }
  EXPECT_TRUE(destroyed);
}

TEST_F(FilteredSink, NoSink_IsRefused) {
  EXPECT_EQ(thrown_by([] { qz_LOG_FilteredSink(nullptr, filter_of(0, 9)); }),
            thrown<QZX_logging_illegal_argument>("sink: it is null"));
}

TEST_F(FilteredSink, MakingItWithoutMemory_ThrowsThat) {
  EXPECT_GT(FailEveryAllocation([] {
              std::unique_ptr<qz_LOG_Sink> inner;
              try {
                inner.reset(new qz_LOG_MemorySink());
              } catch (const std::bad_alloc&) {
                throw QZX_memory_alloc();
              }
              const qz_LOG_FilteredSink sink(std::move(inner), filter_of(0, 9));
            }),
            2U);
}

}  // namespace
