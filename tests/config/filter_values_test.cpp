#include "config/filter_values.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "config/logconf.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::AllocationFailure;
using qz_test::TempDir;

std::string text_of(const FilterValues& values, FilterKey key) {
  unsigned value = 0xABCDEF;
  if (values.get(key, value)) return std::to_string(value);
  EXPECT_EQ(value, 0xABCDEFU);
  return "none";
}

TEST(FilterValues, Initially_None) {
  const FilterValues values;
  for (std::size_t key = 0; key < kFilterKeyCount; ++key) {
    EXPECT_EQ(text_of(values, static_cast<FilterKey>(key)), "none");
  }
}

TEST(FilterValues, Completed_OnlyWhatIsMissing) {
  FilterValues values;
  FilterValues fallback;
  values.set(FilterKey::kDebugEnabled, 0);
  values.set(FilterKey::kLogLevelLow, 3);
  fallback.set(FilterKey::kDebugEnabled, 1);
  fallback.set(FilterKey::kDebugLogLevelHigh, 9);
  values.complete_from(fallback);
  EXPECT_EQ(text_of(values, FilterKey::kDebugEnabled), "0");
  EXPECT_EQ(text_of(values, FilterKey::kLogLevelLow), "3");
  EXPECT_EQ(text_of(values, FilterKey::kDebugLogLevelHigh), "9");
  EXPECT_EQ(text_of(values, FilterKey::kPropertyMask), "none");
}

/// A configuration over a file of some text, and what it says for a filter's keys all at once.
class FilterValuesOfAFile : public testing::Test {
 protected:
  void configure(const std::string& text) {
    configuration_ = std::make_unique<_qz_LOG_file_configuration>(folder_.write("conf", text).c_str());
  }
  /// Makes sure that the file is loaded, if it ever is.
  void look_up() const {
    unsigned value = 0;
    configuration_->get_integer_value("", "", value);
  }
  /// "null" where the keys have to be asked for one by one.
  std::string value(const char* section, FilterKey key) const {
    const FilterValues* const values = configuration_->get_filter_values(section);
    return values == nullptr ? "null" : text_of(*values, key);
  }

  TempDir folder_;
  std::unique_ptr<_qz_LOG_file_configuration> configuration_;
};

TEST_F(FilterValuesOfAFile, BeforeTheLoad_NullAndTheFileIsNotTouched) {
  configure("[app]\nLogLevelLow=3\n\n");
  EXPECT_EQ(value("app", FilterKey::kLogLevelLow), "null");
  EXPECT_EQ(_qz_LOG_file_configuration::bCfgReaded, 0);
  look_up();
  EXPECT_EQ(value("app", FilterKey::kLogLevelLow), "3");
}

TEST_F(FilterValuesOfAFile, SectionAndGlobal_TheSectionWins) {
  configure("[app]\nLogLevelLow=3\nDebugEnabled=0\n[global]\nLogLevelLow=4\nDebugEnabled=1\nPropertyMask=0x1F\n\n");
  look_up();
  EXPECT_EQ(value("app", FilterKey::kLogLevelLow), "3");
  EXPECT_EQ(value("app", FilterKey::kDebugEnabled), "0");
  EXPECT_EQ(value("app", FilterKey::kPropertyMask), "31");
  EXPECT_EQ(value("app", FilterKey::kLogLevelHigh), "none");
  EXPECT_EQ(value("other", FilterKey::kLogLevelLow), "4");
  EXPECT_EQ(value(nullptr, FilterKey::kDebugEnabled), "1");
}

TEST_F(FilterValuesOfAFile, KeyThatEndsWithAnother_BothFound) {
  configure("[app]\nDebugLogLevelLow=3\n[globalDebug]\nLogLevelHigh=7\n\n");
  look_up();
  EXPECT_EQ(value("app", FilterKey::kDebugLogLevelLow), "3");
  EXPECT_EQ(value("appDebug", FilterKey::kLogLevelLow), "3");
  EXPECT_EQ(value("app", FilterKey::kLogLevelLow), "none");
  EXPECT_EQ(value("other", FilterKey::kDebugLogLevelHigh), "7");
}

TEST_F(FilterValuesOfAFile, KeyAsTheWholeName_BelongsToTheEmptySection) {
  configure("[Log]\nLevelLow=3\n[]\nPropertyMask=4\n\n");
  look_up();
  EXPECT_EQ(value("", FilterKey::kLogLevelLow), "3");
  EXPECT_EQ(value(nullptr, FilterKey::kPropertyMask), "4");
  EXPECT_EQ(value("app", FilterKey::kPropertyMask), "none");
}

TEST_F(FilterValuesOfAFile, AnotherInstanceLoadedFirst_Null) {
  configure("[app]\nLogLevelLow=3\n\n");
  const _qz_LOG_file_configuration second(folder_.write("second", "[app]\nLogLevelLow=4\n\n").c_str());
  unsigned level = 0;
  EXPECT_TRUE(second.get_integer_value("app", "LogLevelLow", level));
  EXPECT_EQ(level, 4U);
  EXPECT_EQ(value("app", FilterKey::kLogLevelLow), "null");
  ASSERT_NE(second.get_filter_values("app"), nullptr);
  EXPECT_EQ(text_of(*second.get_filter_values("app"), FilterKey::kLogLevelLow), "4");
}

TEST_F(FilterValuesOfAFile, LoadedAgain_TheNewOnes) {
  configure("[app]\nLogLevelLow=3\n[global]\nPropertyMask=1\n\n");
  look_up();
  EXPECT_EQ(value("app", FilterKey::kLogLevelLow), "3");
  const _qz_LOG_file_configuration second("/no/such/file");
  const std::string path = folder_.write("conf", "[app]\nLogLevelHigh=5\n\n");
  const timespec times[] = {{1000000000, 0}, {1000000000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  EXPECT_EQ(value("app", FilterKey::kLogLevelHigh), "null");
  look_up();
  EXPECT_EQ(value("app", FilterKey::kLogLevelHigh), "5");
  EXPECT_EQ(value("app", FilterKey::kLogLevelLow), "none");
  EXPECT_EQ(value("app", FilterKey::kPropertyMask), "none");
}

TEST_F(FilterValuesOfAFile, Asked_TakesNoMemory) {
  configure("[a_section_with_quite_a_long_name]\nLogLevelLow=3\n\n");
  look_up();
  const FilterValues* values = nullptr;
  bool happened = false;
  {
    const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
    values = configuration_->get_filter_values("a_section_with_quite_a_long_name");
    happened = failure.happened();
  }
  EXPECT_FALSE(happened);
  ASSERT_NE(values, nullptr);
  EXPECT_EQ(text_of(*values, FilterKey::kLogLevelLow), "3");
}

}  // namespace
