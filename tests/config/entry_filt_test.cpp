#include "qzlog/entry_filt.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "entry/logentry_i.h"
#include "tests/config/entry_filt_fixture.h"

namespace {

using namespace qz_test;
using Implementation = _qz_LOG_log_entry_imp;

constexpr const char* kIllegalLevel = "_qz_LOG_entry_filter::set_filter_log_level():  illegal log level specified.";

TEST(SetFilterLogLevel, BothAtMostNine_Stored) {
  _qz_LOG_entry_filter filter = make_filter();
  for (unsigned low = 0; low <= 9; ++low) {
    for (unsigned high = 0; high <= 9; ++high) {
      filter.set_filter_log_level(low, high);
      EXPECT_EQ(filter.log_level_low, low);
      EXPECT_EQ(filter.log_level_high, high);
    }
  }
}

TEST(SetFilterLogLevel, OneAboveNine_ThrowsAndKeepsTheBounds) {
  struct Bounds {
    unsigned low;
    unsigned high;
  };
  _qz_LOG_entry_filter filter = make_filter();
  filter.set_filter_log_level(2, 7);
  for (const Bounds& bad : {Bounds{0, 10}, {10, 0}, {10, 10}, {0, 0xFFFFFFFFU}, {0xFFFFFFFFU, 9}, {0x80000000U, 1}}) {
    EXPECT_EQ(thrown_by([&] { filter.set_filter_log_level(bad.low, bad.high); }),
              thrown<QZX_logging_invalid_log_level>(kIllegalLevel));
    EXPECT_EQ(filter.log_level_low, 2U);
    EXPECT_EQ(filter.log_level_high, 7U);
  }
}

TEST_F(EntryFilterTest, NoSourceAndEverythingOpen_PassesAnyMaskButZero) {
  const _qz_LOG_entry_filter filter = make_filter();
  for (unsigned level = 0; level <= 9; ++level) {
    EXPECT_TRUE(filter.check_entry({kOrdinaryId, level}));
    EXPECT_TRUE(filter.check_entry({kDebugId, level}));
    EXPECT_TRUE(filter.check_entry({kOnlyDebugId, level}));
    EXPECT_FALSE(filter.check_entry({kNoMaskId, level}));
  }
}

TEST_F(EntryFilterTest, Bounds_AreInclusive) {
  _qz_LOG_entry_filter filter = make_filter();
  filter.set_filter_log_level(3, 6);
  for (unsigned level = 0; level <= 9; ++level) {
    EXPECT_EQ(filter.check_entry({kOrdinaryId, level}), level >= 3 && level <= 6) << level;
  }
}

TEST_F(EntryFilterTest, LowAboveHigh_NothingPasses) {
  _qz_LOG_entry_filter filter = make_filter();
  filter.set_filter_log_level(6, 3);
  for (unsigned level = 0; level <= 9; ++level) EXPECT_FALSE(filter.check_entry({kOrdinaryId, level})) << level;
}

TEST_F(EntryFilterTest, BoundsSetDirectlyAboveNine_ComparedUnsigned) {
  _qz_LOG_entry_filter filter = make_filter();
  filter.log_level_high = 0xFFFFFFFFU;
  EXPECT_TRUE(filter.check_entry({kOrdinaryId, 9}));
  filter.log_level_low = 0x80000000U;
  EXPECT_FALSE(filter.check_entry({kOrdinaryId, 9}));
}

TEST_F(EntryFilterTest, OwnMask_PassesWhenABitIsShared) {
  _qz_LOG_entry_filter filter = make_filter();
  struct Case {
    unsigned mask;
    bool passes;
  };
  for (const Case& test_case : {Case{0x20, true},
                                {0x01, true},
                                {0x21, true},
                                {0x1E, false},
                                {0, false},
                                {kDebugBit, false},
                                {0xFFFFFFDEU, false},
                                {0xFFFFFFDFU, true}}) {
    filter.property_mask = test_case.mask;
    EXPECT_EQ(filter.check_entry({kOrdinaryId, 0}), test_case.passes) << std::hex << test_case.mask;
  }
}

TEST_F(EntryFilterTest, Callback_GetsTheEntrysValuesAndDecides) {
  CallbackCalls calls;
  _qz_LOG_entry_filter filter = make_filter();
  filter.callback = record_call;
  filter.user_data = &calls;
  const qz_LOG_LogEntry entry(kDebugId, 7);
  EXPECT_TRUE(filter.check_entry(entry));
  EXPECT_EQ(calls.count, 1);
  EXPECT_EQ(calls.entry_id, kDebugId);
  EXPECT_EQ(calls.property_mask, kDebugMask);
  EXPECT_EQ(calls.log_level, 7U);
  EXPECT_EQ(calls.entry, &entry);
  calls.answer = false;
  EXPECT_FALSE(filter.check_entry(entry));
  EXPECT_EQ(calls.count, 2);
}

TEST_F(EntryFilterTest, CallbackComesFirst_CalledEvenForALevelAndMaskThatFail) {
  CallbackCalls calls;
  _qz_LOG_entry_filter filter = make_filter();
  filter.callback = record_call;
  filter.user_data = &calls;
  filter.property_mask = 0;
  filter.set_filter_log_level(5, 5);
  EXPECT_FALSE(filter.check_entry({kOrdinaryId, 1}));
  EXPECT_EQ(calls.count, 1);
}

TEST_F(EntryFilterTest, CallbackThrows_ReachesTheCaller) {
  _qz_LOG_entry_filter filter = make_filter();
  filter.callback = [](unsigned, unsigned, unsigned, const qz_LOG_LogEntry&, void*) -> bool {
    throw std::out_of_range("mine");
  };
  try {
    filter.check_entry({kDebugId, 1});
    FAIL() << "threw nothing";
  } catch (const std::out_of_range& thrown) {
    EXPECT_STREQ(thrown.what(), "mine");
  }
  EXPECT_TRUE(filter.debug_entry);
  EXPECT_FALSE(filter.debug_enabled);
}

TEST_F(EntryFilterTest, Flags_SetAnewByEveryCheck) {
  configure("[app]\nDebugEnabled = 2");
  const _qz_LOG_entry_filter filter = {nullptr, nullptr, 0, 0, 9, "app", false, true};
  filter.check_entry({kOrdinaryId, 0});
  EXPECT_TRUE(filter.debug_enabled);
  EXPECT_FALSE(filter.debug_entry);
  filter.check_entry({kDebugId, 0});
  EXPECT_TRUE(filter.debug_entry);
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
  filter.check_entry({kDebugId, 0});
  EXPECT_FALSE(filter.debug_enabled);
  EXPECT_TRUE(filter.debug_entry);
}

TEST_F(EntryFilterTest, DebugEnabled_DebugEntryBypassesCallbackAndMask) {
  configure("[app]\nDebugEnabled=1\nPropertyMask=0x8");
  CallbackCalls calls{.answer = false};
  _qz_LOG_entry_filter filter = make_filter();
  filter.callback = record_call;
  filter.user_data = &calls;
  filter.property_mask = 0;
  EXPECT_TRUE(filter.check_entry({kDebugId, 4}));
  EXPECT_EQ(calls.count, 0);
  EXPECT_FALSE(filter.check_entry({kOrdinaryId, 4}));
  EXPECT_EQ(calls.count, 1);
}

TEST_F(EntryFilterTest, DebugEnabled_DebugEntryOutsideTheBoundsFails) {
  configure("[app]\nDebugEnabled=1\nLogLevelLow=2\nLogLevelHigh=3");
  const _qz_LOG_entry_filter filter = make_filter();
  for (unsigned level = 0; level <= 9; ++level) {
    EXPECT_EQ(filter.check_entry({kDebugId, level}), level == 2 || level == 3) << level;
  }
}

TEST_F(EntryFilterTest, DebugEnabledZero_NoBypass) {
  configure("[app]\nDebugEnabled=0\nPropertyMask=0x8");
  EXPECT_FALSE(make_filter().check_entry({kDebugId, 4}));
}

TEST_F(EntryFilterTest, DebugEnabledZeroInTheSection_HidesTheGlobalOne) {
  configure("[global]\nDebugEnabled=1\nPropertyMask=0x8\n[app]\nDebugEnabled=0");
  EXPECT_FALSE(make_filter().check_entry({kDebugId, 4}));
  EXPECT_TRUE(make_filter("other").check_entry({kDebugId, 4}));
}

TEST_F(EntryFilterTest, DebugLevels_OverrideForDebugEntriesWhateverDebugEnabledSays) {
  for (const char* enabled : {"", "DebugEnabled=0\n", "DebugEnabled=1\n"}) {
    configure(std::string("[app]\n") + enabled +
              "LogLevelLow=0\nLogLevelHigh=1\nDebugLogLevelLow=5\nDebugLogLevelHigh=6");
    const _qz_LOG_entry_filter filter = make_filter();
    for (unsigned level = 0; level <= 9; ++level) {
      EXPECT_EQ(filter.check_entry({kOrdinaryId, level}), level <= 1) << enabled << level;
      EXPECT_EQ(filter.check_entry({kDebugId, level}), level == 5 || level == 6) << enabled << level;
    }
  }
}

TEST_F(EntryFilterTest, OneDebugLevelOnly_TheOtherBoundStays) {
  configure("[app]\nLogLevelLow=2\nLogLevelHigh=6\nDebugLogLevelLow=4");
  const _qz_LOG_entry_filter filter = make_filter();
  for (unsigned level = 0; level <= 9; ++level) {
    EXPECT_EQ(filter.check_entry({kDebugId, level}), level >= 4 && level <= 6) << level;
    EXPECT_EQ(filter.check_entry({kOrdinaryId, level}), level >= 2 && level <= 6) << level;
  }
}

TEST_F(EntryFilterTest, ConfiguredBoundsAboveNine_NotChecked) {
  configure("[app]\nLogLevelLow=0\nLogLevelHigh=0xFFFFFFFF\n[high]\nLogLevelLow=10\nLogLevelHigh=20");
  EXPECT_TRUE(make_filter().check_entry({kOrdinaryId, 9}));
  EXPECT_FALSE(make_filter("high").check_entry({kOrdinaryId, 9}));
}

TEST_F(EntryFilterTest, ConfiguredMask_ReplacesTheOwnOne) {
  configure("[app]\nPropertyMask=0x20\n[none]\nPropertyMask=0");
  _qz_LOG_entry_filter filter = make_filter();
  filter.property_mask = 0;
  EXPECT_TRUE(filter.check_entry({kOrdinaryId, 0}));
  EXPECT_FALSE(filter.check_entry({kNoMaskId, 0}));
  EXPECT_FALSE(make_filter("none").check_entry({kOrdinaryId, 0}));
}

TEST_F(EntryFilterTest, KeysOnlyInGlobal_ApplyToEverySection) {
  configure("[global]\nLogLevelLow=4\nLogLevelHigh=4\nPropertyMask=0x20");
  for (const char* section : {"app", "other", "global", ""}) {
    _qz_LOG_entry_filter filter = make_filter(section);
    filter.property_mask = 0;
    EXPECT_TRUE(filter.check_entry({kOrdinaryId, 4})) << section;
    EXPECT_FALSE(filter.check_entry({kOrdinaryId, 3})) << section;
    EXPECT_FALSE(filter.check_entry({kOrdinaryId, 5})) << section;
  }
}

TEST_F(EntryFilterTest, NullSection_IsTheEmptyOneThenGlobal) {
  configure("[global]\nLogLevelLow=4\nLogLevelHigh=4\n[]\nLogLevelHigh=6");
  const _qz_LOG_entry_filter filter = make_filter(nullptr);
  for (unsigned level = 0; level <= 9; ++level) {
    EXPECT_EQ(filter.check_entry({kOrdinaryId, level}), level >= 4 && level <= 6) << level;
  }
}

TEST_F(EntryFilterTest, SourceWithoutFileOrKeys_OwnValuesCount) {
  qz_LOG_LogConfig::SetConfigurationSource(folder_.path("missing").c_str(), QZ_CONFIGURATION_FILE_MAY_BE_MISSING);
  _qz_LOG_entry_filter filter = make_filter();
  filter.property_mask = 0x1;
  filter.set_filter_log_level(3, 3);
  EXPECT_TRUE(filter.check_entry({kOrdinaryId, 3}));
  EXPECT_FALSE(filter.check_entry({kOrdinaryId, 4}));
  configure("[app]\nUnrelated=1");
  EXPECT_TRUE(filter.check_entry({kOrdinaryId, 3}));
  filter.property_mask = 0x2;
  EXPECT_FALSE(filter.check_entry({kOrdinaryId, 3}));
}

TEST_F(EntryFilterTest, CallbackSetsAnotherSource_TheLaterStagesAskThat) {
  configure("[app]\nLogLevelLow=5\nPropertyMask=0x8");
  struct Change {
    std::string path;
    static bool make(unsigned, unsigned, unsigned, const qz_LOG_LogEntry&, void* data) {
      qz_LOG_LogConfig::SetConfigurationSource(static_cast<Change*>(data)->path.c_str(), QZ_CONFIGURATION_FILE);
      return true;
    }
  } change{folder_.write("other.conf", "[app]\nLogLevelHigh=4\nPropertyMask=0x20\n\n")};
  _qz_LOG_entry_filter filter = make_filter();
  EXPECT_FALSE(filter.check_entry({kOrdinaryId, 4}));
  filter.callback = Change::make;
  filter.user_data = &change;
  EXPECT_TRUE(filter.check_entry({kOrdinaryId, 4}));
  EXPECT_FALSE(filter.check_entry({kOrdinaryId, 5}));
}

TEST_F(EntryFilterTest, CallbackRemovesTheSource_OwnValuesCount) {
  configure("[app]\nLogLevelLow=5\nPropertyMask=0x8");
  _qz_LOG_entry_filter filter = make_filter();
  filter.callback = [](unsigned, unsigned, unsigned, const qz_LOG_LogEntry&, void*) {
    qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
    return true;
  };
  EXPECT_TRUE(filter.check_entry({kOrdinaryId, 4}));
}

TEST_F(EntryFilterTest, MissingFileWrittenByTheCallback_ReadByTheLevelStage) {
  const std::string path = folder_.path("later.conf");
  qz_LOG_LogConfig::SetConfigurationSource(path.c_str(), QZ_CONFIGURATION_FILE_MAY_BE_MISSING);
  _qz_LOG_entry_filter filter = make_filter();
  filter.callback = [](unsigned, unsigned, unsigned, const qz_LOG_LogEntry&, void* folder) {
    static_cast<TempDir*>(folder)->write("later.conf", "[app]\nDebugEnabled=1\nLogLevelLow=5\n\n");
    return true;
  };
  filter.user_data = &folder_;
  EXPECT_FALSE(filter.check_entry({kDebugId, 4}));
  EXPECT_FALSE(filter.debug_enabled);
  EXPECT_TRUE(filter.check_entry({kDebugId, 5}));
  EXPECT_TRUE(filter.debug_enabled);
}

TEST_F(EntryFilterTest, CheckOnceLoaded_TakesNoMemory) {
  const char* const section = "a_section_with_quite_a_long_name";
  configure("[a_section_with_quite_a_long_name]\nLogLevelLow=2\n[global]\nDebugLogLevelHigh=7\nPropertyMask=1");
  const _qz_LOG_entry_filter filter = make_filter(section);
  const qz_LOG_LogEntry ordinary(kOrdinaryId, 3);
  const qz_LOG_LogEntry debug(kDebugId, 8);
  EXPECT_TRUE(filter.check_entry(ordinary));
  bool results[2] = {};
  bool happened = false;
  {
    const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
    results[0] = filter.check_entry(ordinary);
    results[1] = filter.check_entry(debug);
    happened = failure.happened();
  }
  EXPECT_FALSE(happened);
  EXPECT_TRUE(results[0]);
  EXPECT_FALSE(results[1]);
}

TEST_F(EntryFilterTest, CallbackStageAlone_ReliesOnTheFlags) {
  CallbackCalls calls{.answer = false};
  _qz_LOG_entry_filter filter = make_filter();
  const qz_LOG_LogEntry entry(kOrdinaryId, 1);
  EXPECT_TRUE(filter._check_entry_by_callback(entry));
  filter.callback = record_call;
  filter.user_data = &calls;
  for (const bool enabled : {false, true}) {
    for (const bool debug : {false, true}) {
      filter.debug_enabled = enabled;
      filter.debug_entry = debug;
      EXPECT_EQ(filter._check_entry_by_callback(entry), enabled && debug);
    }
  }
  EXPECT_EQ(calls.count, 3);
}

TEST_F(EntryFilterTest, LevelStageAlone_LooksAtTheEntrysOwnMask) {
  configure("[app]\nLogLevelLow=1\nLogLevelHigh=2\nDebugLogLevelLow=7\nDebugLogLevelHigh=8");
  _qz_LOG_entry_filter filter = make_filter();
  for (const bool flag : {false, true}) {
    filter.debug_entry = flag;
    filter.debug_enabled = flag;
    EXPECT_TRUE(filter._check_entry_by_log_level(Implementation(kOrdinaryId, 2)));
    EXPECT_FALSE(filter._check_entry_by_log_level(Implementation(kOrdinaryId, 7)));
    EXPECT_TRUE(filter._check_entry_by_log_level(Implementation(kDebugId, 7)));
    EXPECT_FALSE(filter._check_entry_by_log_level(Implementation(kDebugId, 2)));
    EXPECT_EQ(filter.debug_entry, flag);
  }
}

TEST_F(EntryFilterTest, MaskStageAlone_ReliesOnTheFlags) {
  configure("[app]\nPropertyMask=0x8");
  _qz_LOG_entry_filter filter = make_filter();
  for (const bool enabled : {false, true}) {
    for (const bool debug : {false, true}) {
      filter.debug_enabled = enabled;
      filter.debug_entry = debug;
      EXPECT_EQ(filter._check_entry_by_property_mask(Implementation(kOrdinaryId, 0)), enabled && debug);
    }
  }
}

TEST_F(EntryFilterTest, MaskStageAloneWithoutSource_IgnoresTheFlags) {
  _qz_LOG_entry_filter filter = make_filter();
  filter.debug_enabled = true;
  filter.debug_entry = true;
  filter.property_mask = 0x8;
  EXPECT_FALSE(filter._check_entry_by_property_mask(Implementation(kDebugId, 0)));
  filter.property_mask = 0x1;
  EXPECT_TRUE(filter._check_entry_by_property_mask(Implementation(kDebugId, 0)));
}

/// What check_entry answers and leaves in the filter, by itself and by way of the stages.
void expect_as_in_stages(const _qz_LOG_entry_filter& filter, const qz_LOG_LogEntry& entry) {
  for (const bool former : {false, true}) {
    _qz_LOG_entry_filter direct = filter;
    _qz_LOG_entry_filter staged = filter;
    direct.debug_enabled = staged.debug_enabled = former;
    direct.debug_entry = staged.debug_entry = former;
    EXPECT_EQ(direct.check_entry(entry), staged._check_entry_in_stages(entry))
        << "ID " << entry.GetEntryID() << ", level " << entry.GetLogLevel() << ", " << filter.log_level_low << " to "
        << filter.log_level_high << ", mask " << filter.property_mask;
    EXPECT_EQ(direct.debug_enabled, staged.debug_enabled);
    EXPECT_EQ(direct.debug_entry, staged.debug_entry);
  }
}

void expect_everything_as_in_stages(_qz_LOG_entry_filter filter) {
  for (const unsigned mask : {0U, 0x1U, 0x20U, 0x40U, kDebugBit, 0xFFFFFFFFU}) {
    for (unsigned low = 0; low <= 10; ++low) {
      for (unsigned high = 0; high <= 10; ++high) {
        filter.property_mask = mask;
        filter.log_level_low = low;
        filter.log_level_high = high;
        for (const unsigned id : {kOrdinaryId, kDebugId, kNoMaskId, kOnlyDebugId}) {
          for (const unsigned level : {0U, 1U, 5U, 9U}) expect_as_in_stages(filter, {id, level});
        }
      }
    }
  }
}

TEST_F(EntryFilterTest, CheckEntryWithoutSource_AsInStages) { expect_everything_as_in_stages(make_filter()); }

TEST_F(EntryFilterTest, CheckEntryWithSource_AsInStages) {
  configure("[app]\nDebugEnabled = 1\nLogLevelLow = 2");
  expect_everything_as_in_stages(make_filter());
}

TEST_F(EntryFilterTest, CheckEntryWithCallback_AsInStages) {
  for (const bool answer : {false, true}) {
    CallbackCalls calls{.answer = answer};
    _qz_LOG_entry_filter filter = make_filter();
    filter.callback = record_call;
    filter.user_data = &calls;
    expect_everything_as_in_stages(filter);
  }
}

TEST_F(EntryFilterTest, SourceSetAndRemoved_CountsFromTheNextCheckOn) {
  const _qz_LOG_entry_filter filter = make_filter();
  const qz_LOG_LogEntry entry(kOrdinaryId, 1);
  EXPECT_TRUE(filter.check_entry(entry));
  configure("[app]\nLogLevelLow = 2");
  EXPECT_FALSE(filter.check_entry(entry));
  EXPECT_THROW(qz_LOG_LogConfig::SetConfigurationSource("/nonexistent/qz.conf", QZ_CONFIGURATION_FILE),
               QZX_logging_illegal_argument);
  EXPECT_FALSE(filter.check_entry(entry)) << "a refused source replaces nothing";
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
  EXPECT_TRUE(filter.check_entry(entry));
}

TEST_F(EntryFilterTest, EntryChangedAfterConstruction_CountsAsItIs) {
  _qz_LOG_entry_filter filter = make_filter();
  filter.set_filter_log_level(3, 6);
  filter.property_mask = 0x1U;
  qz_LOG_LogEntry entry(kOrdinaryId, 3);
  EXPECT_TRUE(filter.check_entry(entry));
  entry.SetLogLevel(2);
  EXPECT_FALSE(filter.check_entry(entry));
  entry.SetLogLevel(6);
  EXPECT_TRUE(filter.check_entry(entry));
  const qz_LOG_LogEntry copy(entry);
  EXPECT_TRUE(filter.check_entry(copy));
  entry.SetEntryID(kNoMaskId);
  entry.SetLogLevel(6);
  EXPECT_FALSE(filter.check_entry(entry));
  EXPECT_TRUE(filter.check_entry(copy));
  entry = copy;
  EXPECT_TRUE(filter.check_entry(entry));
}

}  // namespace
