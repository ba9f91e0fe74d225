#include "foundation/local_zone.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/rounds.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/seeded_random.h"

using namespace qzlog;

namespace qz_test {
namespace {

std::string told_by_system(long long moment) {
  std::tm local = {};
  const auto seconds = static_cast<std::time_t>(moment);
  if (localtime_r(&seconds, &local) == nullptr) return "0 winter";
  return std::to_string(local.tm_gmtoff) + (local.tm_isdst > 0 ? " summer" : " winter");
}

std::string told(long long moment) {
  const LocalZone zone = local_zone_at(moment);
  return std::to_string(zone.offset_seconds) + (zone.is_daylight_saving ? " summer" : " winter");
}

bool is_installed(const std::string& zone) { return std::ifstream("/usr/share/zoneinfo/" + zone).good(); }

/// Zones with half hours, a day left out, minutes and seconds of mean time, two summers in a year, and none.
constexpr const char* kZones[] = {"Europe/Berlin",
                                  "America/New_York",
                                  "Australia/Lord_Howe",
                                  "Asia/Kathmandu",
                                  "Pacific/Apia",
                                  "Africa/Monrovia",
                                  "Africa/Casablanca",
                                  "America/Nuuk",
                                  "Antarctica/Troll",
                                  "Europe/Dublin",
                                  "UTC",
                                  "right/Europe/Berlin",
                                  "Asia/Gaza",
                                  "Africa/Cairo"};

/// Seconds before, at and after each change of offset or summer time between two moments.
std::vector<long long> moments_of_changes(long long from, long long to) {
  constexpr long long kStep = 86400 * 7;
  std::vector<long long> moments;
  for (long long begin = from; begin < to; begin += kStep) {
    long long low = begin;
    long long high = begin + kStep;
    if (told_by_system(low) == told_by_system(high)) continue;
    while (high - low > 1) {
      const long long middle = low + (high - low) / 2;
      (told_by_system(middle) == told_by_system(low) ? low : high) = middle;
    }
    for (long long distance = -901; distance <= 901; distance += distance > -3 && distance < 3 ? 1 : 17) {
      moments.push_back(high + distance);
    }
  }
  return moments;
}

TEST(LocalZone, EveryChangeOfZones_AsTheSystemTells) {
  for (const char* const name : kZones) {
    if (!is_installed(name)) continue;
    const TimeZone zone(name);
    const std::vector<long long> moments = moments_of_changes(-5'000'000'000, 4'200'000'000);
    for (const long long moment : moments) ASSERT_EQ(told(moment), told_by_system(moment)) << name << ' ' << moment;
  }
}

TEST(LocalZone, RandomMomentsInAllZones_AsTheSystemTells) {
  std::ifstream list("/usr/share/zoneinfo/tzdata.zi");
  if (!list) GTEST_SKIP() << "no list of zones";
  SeededRandom random;
  std::string line;
  int zones = 0;
  while (std::getline(list, line)) {
    std::istringstream words(line);
    std::string kind;
    std::string name;
    if (!(words >> kind >> name) || kind != "Z" || !is_installed(name)) continue;
    ++zones;
    const TimeZone zone(name.c_str());
    for (int i = 0; i < rounds(80); ++i) {
      const long long moment = random.between(-6'000'000'000, 9'000'000'000);
      for (const long long near : {moment, moment + 1, moment + 900, moment}) {
        ASSERT_EQ(told(near), told_by_system(near)) << name << ' ' << near;
      }
    }
  }
  EXPECT_GT(zones, 200);
}

TEST(LocalZone, MomentsFarAway_AsTheSystemTells) {
  const TimeZone zone("Europe/Berlin");
  for (const long long moment : {-62167219200LL, 253402300799LL, 67767976233532799LL, 67768036191676800LL,
                                 -67768040609740800LL, 4611686018427387904LL, -4611686018427387904LL}) {
    EXPECT_EQ(told(moment), told_by_system(moment)) << moment;
  }
}

TEST(LocalZone, AnotherZone_NoticedAtOnce) {
  constexpr long long kMoment = 1795248930;
  for (int i = 0; i < 50; ++i) {
    for (const char* const name : {"CET-1", "EST5EDT,M3.2.0,M11.1.0", "GMT0", "XYZ-5:45", "CET-2"}) {
      const TimeZone zone(name);
      for (int again = 0; again < 3; ++again) ASSERT_EQ(told(kMoment), told_by_system(kMoment)) << name;
    }
  }
}

TEST(LocalZone, SameNamesOtherRule_NoticedWithTheNextTick) {
  constexpr long long kSpring = 1774746000;  // 2026-03-29 01:00 GMT
  const TimeZone first("CET-1CEST,M3.5.0,M10.5.0/3");
  ASSERT_EQ(told(kSpring), "7200 summer");
  const TimeZone second("CET-1CEST,M4.5.0,M10.5.0/3");
  std::timespec tick = {};
  clock_getres(CLOCK_MONOTONIC_COARSE, &tick);
  std::timespec now = {};
  std::timespec begin = {};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &begin);
  do {
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  } while (now.tv_sec == begin.tv_sec && now.tv_nsec == begin.tv_nsec);
  EXPECT_EQ(told(kSpring), "3600 winter");
}

}  // namespace
}  // namespace qz_test
