#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <functional>
#include <thread>
#include <vector>

#include "qzlog/logcfg.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace {

using Config = qz_LOG_LogConfig;
using LogCfgThreads = qz_test::SettingsTest;

constexpr unsigned kThreads = 8;
constexpr unsigned kRounds = 200;

void in_threads(const std::function<void(unsigned)>& work) {
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (unsigned number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(LogCfgThreads, FlagsSetAndReadAtOnce_OnlyStoredValuesSeen) {
  std::atomic<int> wrong = 0;
  in_threads([&](unsigned number) {
    for (unsigned round = 0; round < kRounds; ++round) {
      const unsigned choice = (round + number) % 2;
      Config::SetICUEnabled(choice == 0);
      Config::SetActionAttrLenExceed(static_cast<int>(choice));
      Config::SetSynchronizationLevel(choice == 0 ? QZ_SYNCHRONIZATION_NONE : QZ_SYNCHRONIZATION_FULL);
      Config::EnableCountConfig(choice == 0);
      EnableDebugLog(0);
      const int action = Config::GetActionAttrLenExceed();
      const unsigned level = Config::GetSynchronizationLevel();
      wrong += action == 0 || action == 1 ? 0 : 1;
      wrong += level == 0 || level == 4 ? 0 : 1;
      wrong += Config::IsICUEnabled() || Config::IsEnableCountConfig() || GetDebugLogLevel() == 0 ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST_F(LogCfgThreads, SettersAtOnce_OneAfterTheOther) {
  const std::string definitions = folder_.write("std.ldf", qz_test::LdfFile{.entries = {{.id = 5}}}.bytes());
  const std::string configuration = folder_.write("conf", "[app]\nLevel=3\n\n");
  in_threads([&](unsigned number) {
    for (unsigned round = 0; round < kRounds; ++round) {
      switch ((round + number) % 5) {
        case 0:
          Config::SetDefinitionPath(definitions.c_str());
          break;
        case 1:
          Config::SetCodePage("ISO-8859-1");
          break;
        case 2:
          Config::SetConfigurationSource(configuration.c_str(), QZ_CONFIGURATION_FILE);
          break;
        case 3:
          Config::SetLocale(round % 2 == 0 ? QZ_LOCALE_DE_DE : QZ_LOCALE_JA_JP);
          break;
        default:
          Config::ClearDefinitions();
      }
    }
  });
  EXPECT_EQ(Config::GetDefinitionPath(), definitions);
  EXPECT_STREQ(Config::GetCodePage(), "ISO-8859-1");
  unsigned level = 0;
  EXPECT_TRUE(Config::GetConfigurationIntegerValue("app", "Level", level));
  EXPECT_EQ(level, 3U);
}

TEST_F(LogCfgThreads, ConfigurationReadAtOnce_AllSeeTheValue) {
  const std::string configuration = folder_.write("conf", "[app]\nLevel=3\n\n");
  Config::SetConfigurationSource(configuration.c_str(), QZ_CONFIGURATION_FILE);
  std::atomic<unsigned> right = 0;
  in_threads([&](unsigned) {
    for (unsigned round = 0; round < kRounds; ++round) {
      unsigned level = 0;
      right += Config::GetConfigurationIntegerValue("app", "Level", level) && level == 3 ? 1 : 0;
    }
  });
  EXPECT_EQ(right, kThreads * kRounds);
}

}  // namespace
