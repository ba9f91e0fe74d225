#include "message/template_cache.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qz_test {
namespace {

struct Compiled {
  std::string text;
};

/// A cache and how often it had to compile.
class Counted {
 public:
  const std::string& get(std::string_view text) {
    return cache_
        .get(text,
             [&] {
               ++compiled_;
               return std::make_unique<Compiled>(Compiled{std::string(text)});
             })
        .text;
  }
  /// Whether `text` was at hand.
  bool has(std::string_view text) {
    const int before = compiled_;
    get(text);
    return compiled_ == before;
  }

  TemplateCache<char, Compiled> cache_;
  int compiled_ = 0;
};

constexpr int kCapacity = 512;
constexpr std::size_t kMaxLength = 4096;

std::string numbered(int number) { return "template " + std::to_string(number); }

TEST(TemplateCache, SameTextAgain_CompiledOnce) {
  Counted counted;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(counted.get("a"), "a");
  EXPECT_EQ(counted.compiled_, 1);
}

TEST(TemplateCache, EmptyText_IsAText) {
  Counted counted;
  EXPECT_EQ(counted.get(""), "");
  EXPECT_TRUE(counted.has(""));
  EXPECT_FALSE(counted.has(std::string_view("\0", 1)));
}

TEST(TemplateCache, AsManyAsItHolds_AllKept) {
  Counted counted;
  for (int i = 0; i < kCapacity; ++i) counted.get(numbered(i));
  for (int i = 0; i < kCapacity; ++i) EXPECT_TRUE(counted.has(numbered(i))) << i;
}

TEST(TemplateCache, OneMore_TheOldestGoes) {
  Counted counted;
  for (int i = 0; i < kCapacity; ++i) counted.get(numbered(i));
  counted.get(numbered(0));  // being used does not make it younger
  counted.get(numbered(kCapacity));
  for (int i = 1; i <= kCapacity; ++i) EXPECT_TRUE(counted.has(numbered(i))) << i;
  EXPECT_FALSE(counted.has(numbered(0)));
  EXPECT_FALSE(counted.has(numbered(1)));
}

TEST(TemplateCache, ManyTimesItsCapacity_TheLastOnesKept) {
  Counted counted;
  constexpr int kTexts = 5 * kCapacity + 7;
  for (int i = 0; i < kTexts; ++i) EXPECT_EQ(counted.get(numbered(i)), numbered(i));
  for (int i = kTexts - kCapacity; i < kTexts; ++i) EXPECT_TRUE(counted.has(numbered(i))) << i;
}

TEST(TemplateCache, VeryLongTexts_NotKept) {
  Counted counted;
  const std::string longest(kMaxLength, 'x');
  counted.get(longest);
  EXPECT_TRUE(counted.has(longest));
  const std::string too_long(kMaxLength + 1, 'x');
  EXPECT_EQ(counted.get(too_long), too_long);
  EXPECT_FALSE(counted.has(too_long));
  EXPECT_TRUE(counted.has(longest));
}

TEST(TemplateCache, CompilingThrows_NothingKeptAndTheNextCallCompiles) {
  Counted counted;
  counted.get("kept");
  EXPECT_THROW(counted.cache_.get("bad", []() -> std::unique_ptr<Compiled> { throw std::runtime_error("no"); }),
               std::runtime_error);
  EXPECT_FALSE(counted.has("bad"));
  EXPECT_TRUE(counted.has("kept"));
}

TEST(TemplateCache, ResultWhileItGrows_StaysAtItsPlace) {
  Counted counted;
  const std::string* const first = &counted.get("first");
  for (int i = 0; i < kCapacity - 1; ++i) counted.get(numbered(i));
  EXPECT_EQ(&counted.get("first"), first);
}

}  // namespace
}  // namespace qz_test
