#include <gtest/gtest.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "foundation/qz_libc.h"
#include "tests/support/support.h"

namespace {

constexpr int kThreads = 8;
constexpr int kTokens = 200;

TEST(QzStrtokThreads, EveryThread_KeepsItsOwnPosition) {
  std::barrier step(kThreads);
  std::vector<qz_test::Texts> found(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      std::string text;
      for (int i = 0; i < kTokens; ++i) text += std::to_string(t) + "-" + std::to_string(i) + ",";
      step.arrive_and_wait();
      char* start = text.data();
      for (int i = 0; i <= kTokens; ++i) {
        const char* token = QZ_strtok(start, ",");
        found[static_cast<std::size_t>(t)].emplace_back(token == nullptr ? "(null)" : token);
        start = nullptr;
        step.arrive_and_wait();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) {
    qz_test::Texts expected;
    for (int i = 0; i < kTokens; ++i) expected.push_back(std::to_string(t) + "-" + std::to_string(i));
    expected.emplace_back("(null)");
    EXPECT_EQ(found[static_cast<std::size_t>(t)], expected);
  }
}

}  // namespace
