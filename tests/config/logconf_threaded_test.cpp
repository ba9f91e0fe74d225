#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

#include "config/logconf.h"
#include "tests/support/support.h"

namespace {

using qz_test::TempDir;

constexpr int kThreads = 8;

TEST(LogConfThreads, FirstLookupsAtOnce_AllSeeTheValue) {
  const TempDir folder;
  std::string text = "[app]\nLevel=3\n[global]\nMask=0x1F\n";
  for (int i = 0; i < 200; ++i) text += "key" + std::to_string(i) + "=" + std::to_string(i) + "\n";
  const std::string path = folder.write("conf", text + "\n");
  for (int round = 0; round < 100; ++round) {
    const _qz_LOG_file_configuration configuration(path.c_str());
    std::barrier start(kThreads);
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        unsigned level = 0;
        unsigned mask = 0;
        unsigned none = 7;
        start.arrive_and_wait();
        right += configuration.get_integer_value("app", "Level", level) && level == 3 ? 1 : 0;
        right += configuration.get_integer_value("app", "Mask", mask) && mask == 31 ? 1 : 0;
        right += !configuration.get_integer_value("app", "none", none) && none == 7 ? 1 : 0;
      });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(right, 3 * kThreads) << "round " << round;
  }
}

TEST(LogConfThreads, LookupsOfAMissingFileAtOnce_NoneFindsAValue) {
  const TempDir folder;
  const _qz_LOG_file_configuration configuration(folder.path("missing").c_str());
  std::atomic<int> found = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      unsigned value = 0;
      for (int j = 0; j < 200; ++j) found += configuration.get_integer_value("app", "Level", value) ? 1 : 0;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(found, 0);
}

}  // namespace
