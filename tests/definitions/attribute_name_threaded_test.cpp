#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "definitions/attribute_name.h"

using namespace qzlog;

namespace {

TEST(KnownNameThreads, SameNewNamesAtOnce_OneObjectEach) {
  constexpr std::size_t kThreads = 8;
  constexpr std::size_t kNames = 2000;
  std::vector<std::vector<const KnownName*>> found(kThreads);
  std::atomic<std::size_t> waiting{kThreads};
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      for (std::size_t i = 0; i < kNames; ++i) {
        found[number].push_back(KnownName::of(("at once " + std::to_string(i)).c_str()));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t number = 1; number < kThreads; ++number) EXPECT_EQ(found[number], found[0]);
  EXPECT_EQ(std::set<const KnownName*>(found[0].begin(), found[0].end()).size(), kNames);
  EXPECT_STREQ(found[0][17]->text(), "at once 17");
}

}  // namespace
