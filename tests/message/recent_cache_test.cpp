#include "message/recent_cache.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

using namespace qzlog;

namespace qz_test {
namespace {

struct Made {
  std::string text;
};

/// A cache and how often it had to make one.
class Counted {
 public:
  const std::string& get(const std::string& text) {
    return cache_
        .get(text,
             [&] {
               ++made_;
               return std::make_unique<Made>(Made{text});
             })
        .text;
  }
  /// Whether `text` was at hand.
  bool has(const std::string& text) {
    const int before = made_;
    get(text);
    return made_ == before;
  }

  RecentCache<std::string, Made> cache_;
  int made_ = 0;
};

constexpr int kCapacity = 512;

std::string numbered(int number) { return "template " + std::to_string(number); }

TEST(RecentCache, SameKeyAgain_MadeOnce) {
  Counted counted;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(counted.get("a"), "a");
  EXPECT_EQ(counted.made_, 1);
}

TEST(RecentCache, EmptyKey_IsAKey) {
  Counted counted;
  EXPECT_EQ(counted.get(""), "");
  EXPECT_TRUE(counted.has(""));
  EXPECT_FALSE(counted.has(std::string("\0", 1)));
}

TEST(RecentCache, AsManyAsItHolds_AllKept) {
  Counted counted;
  for (int i = 0; i < kCapacity; ++i) counted.get(numbered(i));
  for (int i = 0; i < kCapacity; ++i) EXPECT_TRUE(counted.has(numbered(i))) << i;
}

TEST(RecentCache, OneMore_TheOldestGoes) {
  Counted counted;
  for (int i = 0; i < kCapacity; ++i) counted.get(numbered(i));
  counted.get(numbered(0));  // being used does not make it younger
  counted.get(numbered(kCapacity));
  for (int i = 1; i <= kCapacity; ++i) EXPECT_TRUE(counted.has(numbered(i))) << i;
  EXPECT_FALSE(counted.has(numbered(0)));
  EXPECT_FALSE(counted.has(numbered(1)));
}

TEST(RecentCache, ManyTimesItsCapacity_TheLastOnesKept) {
  Counted counted;
  constexpr int kTexts = 5 * kCapacity + 7;
  for (int i = 0; i < kTexts; ++i) EXPECT_EQ(counted.get(numbered(i)), numbered(i));
  for (int i = kTexts - kCapacity; i < kTexts; ++i) EXPECT_TRUE(counted.has(numbered(i))) << i;
}

TEST(RecentCache, MakingThrows_NothingKeptAndTheNextCallMakes) {
  Counted counted;
  counted.get("kept");
  EXPECT_THROW(counted.cache_.get("bad", []() -> std::unique_ptr<Made> { throw std::runtime_error("no"); }),
               std::runtime_error);
  EXPECT_FALSE(counted.has("bad"));
  EXPECT_TRUE(counted.has("kept"));
}

TEST(RecentCache, ValueWhileItGrows_StaysAtItsPlace) {
  Counted counted;
  const std::string* const first = &counted.get("first");
  for (int i = 0; i < kCapacity - 1; ++i) counted.get(numbered(i));
  EXPECT_EQ(&counted.get("first"), first);
}

}  // namespace
}  // namespace qz_test
