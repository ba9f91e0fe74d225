#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "foundation/local_zone.h"
#include "tests/support/rounds.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/seeded_random.h"

using namespace qzlog;

namespace qz_test {
namespace {

constexpr long long kMoment = 1795248930;  // in winter
constexpr int kThreads = 4;

TEST(LocalZoneThreads, ThreadsOfOneZone_AllAsTheSystemTells) {
  const TimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&wrong, number] {
      RandomNumbers random(static_cast<unsigned>(number));
      for (int i = 0; i < rounds(20000); ++i) {
        const auto moment = static_cast<std::time_t>(kMoment + random.between(-50'000'000, 50'000'000));
        std::tm local = {};
        localtime_r(&moment, &local);
        const LocalZone told = local_zone_at(moment);
        if (told.offset_seconds != local.tm_gmtoff || told.is_daylight_saving != (local.tm_isdst > 0)) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(LocalZoneThreads, ZoneThatIsSetMeanwhile_OneOfBothAndThenTheLast) {
  std::atomic<bool> is_last = false;
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  {
    const TimeZone first("AAA-1");
    for (int number = 0; number < kThreads; ++number) {
      threads.emplace_back([&] {
        // What it remembers from before, it is to forget.
        while (!is_last) {
          const int offset = local_zone_at(kMoment).offset_seconds;
          if (offset != 3600 && offset != 7200) ++wrong;
        }
        if (local_zone_at(kMoment).offset_seconds != 7200) ++wrong;
      });
    }
    for (int i = 0; i < rounds(2000); ++i) {
      const TimeZone other(i % 2 == 0 ? "BBB-2" : "AAA-1");
    }
    const TimeZone last("BBB-2");
    is_last = true;
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace qz_test
