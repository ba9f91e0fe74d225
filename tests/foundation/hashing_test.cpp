#include "foundation/hashing.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;

/// The rule as it reads, in wide arithmetic reduced after every step.
unsigned slow_hashcode(const std::string& text) {
  const auto value_at = [&](std::size_t position) {
    const int byte = static_cast<unsigned char>(text[position]);
    return static_cast<long long>(byte < 128 ? byte : byte - 256);
  };
  const auto step_hash = [](unsigned long long hash, int factor, long long value) {
    return (hash * static_cast<unsigned>(factor) + static_cast<unsigned long long>(value + (1LL << 32))) % (1ULL << 32);
  };
  unsigned long long hash = 0;
  const auto length = static_cast<long long>(text.size());
  if (length <= 15) {
    for (std::size_t i = 0; i < text.size(); ++i) hash = step_hash(hash, 37, value_at(i));
  } else {
    std::size_t position = 0;
    for (long long remaining = length; remaining > 0; remaining -= length / 8) {
      hash = step_hash(hash, 39, value_at(position));
      position += static_cast<std::size_t>(length / 8);
    }
  }
  return static_cast<unsigned>(hash);
}

TEST(MyHashcode, EmptyText_IsZero) { EXPECT_EQ(my_hashcode(""), 0U); }

TEST(MyHashcode, OneLetter_IsItsCode) { EXPECT_EQ(my_hashcode("a"), 97U); }

TEST(MyHashcode, ByteE9_ContributesMinus23) {
  EXPECT_EQ(my_hashcode("\xE9"), static_cast<unsigned>(-23));
  EXPECT_EQ(my_hashcode("a\xE9"), 97U * 37U - 23U);
}

TEST(MyHashcode, FifteenCharacters_AllCountWith37) {
  const std::string text = "abcdefghijklmno";
  unsigned expected = 0;
  for (const char character : text) expected = expected * 37 + static_cast<unsigned>(character);
  EXPECT_EQ(my_hashcode(text.c_str()), expected);
}

TEST(MyHashcode, SixteenCharacters_EverySecondCountsWith39) {
  const std::string text = "abcdefghijklmnop";
  unsigned expected = 0;
  for (std::size_t i = 0; i <= 14; i += 2) expected = expected * 39 + static_cast<unsigned>(text[i]);
  EXPECT_EQ(my_hashcode(text.c_str()), expected);
}

TEST(MyHashcode, SixteenCharacters_OddPositionsDoNotCount) {
  EXPECT_EQ(my_hashcode("a.c.e.g.i.k.m.o."), my_hashcode("a-c-e-g-i-k-m-o-"));
  EXPECT_NE(my_hashcode("a.c.e.g.i.k.m.o."), my_hashcode("a.c.e.g.i.k.m.x."));
}

TEST(MyHashcode, SeventeenCharacters_NinePositionsCount) {
  const std::string text = "abcdefghijklmnopq";
  unsigned expected = 0;
  for (std::size_t i = 0; i <= 16; i += 2) expected = expected * 39 + static_cast<unsigned>(text[i]);
  EXPECT_EQ(my_hashcode(text.c_str()), expected);
}

TEST(MyHashcode, FixedNames_KeepTheirValues) {
  // Computed once by hand from the rule, so that a change of the rule in test and source alike is noticed.
  EXPECT_EQ(my_hashcode("ab"), 97U * 37U + 98U);
  EXPECT_EQ(my_hashcode("\xFF"), 4294967295U);
  EXPECT_EQ(my_hashcode("\x80"), 4294967168U);
}

TEST(MyHashcode, EveryLengthWithEveryByte_AgreesWithTheRule) {
  SeededRandom random;
  for (std::size_t length = 0; length <= 300; ++length) {
    for (int repeat = 0; repeat < 10; ++repeat) {
      const std::string text = random.text(length);
      ASSERT_EQ(my_hashcode(text.c_str()), slow_hashcode(text)) << "length " << length;
    }
  }
}

TEST(MyHashcode, LongTexts_AgreeWithTheRule) {
  SeededRandom random;
  for (const std::size_t length : {1000U, 4095U, 4096U, 65535U, 1000003U}) {
    const std::string text = random.text(length);
    EXPECT_EQ(my_hashcode(text.c_str()), slow_hashcode(text)) << "length " << length;
  }
}

TEST(RecommendedHashSize, AnyRequest_AtLeastOne) {
  for (unsigned requested = 0; requested < 5000; ++requested) EXPECT_GE(QZ_recommended_hash_size(requested), 1U);
  EXPECT_GE(QZ_recommended_hash_size(4294967295U), 1U);
}

TEST(RecommendedHashSize, OwnResult_IsKept) {
  SeededRandom random;
  for (unsigned requested = 0; requested < 5000; ++requested) {
    const unsigned size = QZ_recommended_hash_size(requested);
    EXPECT_EQ(QZ_recommended_hash_size(size), size) << "request " << requested;
  }
  for (int i = 0; i < 100; ++i) {
    const unsigned size = QZ_recommended_hash_size(static_cast<unsigned>(random.between(0, 4294967295LL)));
    EXPECT_EQ(QZ_recommended_hash_size(size), size);
  }
}

TEST(RecommendedHashSize, Table_SmallestPrimeAtOrAboveTheRequest) {
  const struct {
    unsigned requested;
    unsigned size;
  } cases[] = {{0, 2},
               {1, 2},
               {2, 2},
               {3, 3},
               {4, 5},
               {7, 7},
               {8, 11},
               {9, 11},
               {23, 23},
               {24, 29},
               {25, 29},
               {128, 131},
               {1000, 1009},
               {65536, 65537},
               {4294967291U, 4294967291U},
               {49, 53},
               {121, 127},
               {10201, 10211},
               {999999, 1000003},
               {4294967295U, 4294967291U}};
  for (const auto& c : cases) EXPECT_EQ(QZ_recommended_hash_size(c.requested), c.size) << "request " << c.requested;
}

TEST(QzHash, EqualKeys_GiveEqualIndexesBelowTheSize) {
  SeededRandom random;
  for (int i = 0; i < 5000; ++i) {
    const auto size = static_cast<unsigned>(random.between(1, 1000));
    const std::string text = random.text(static_cast<std::size_t>(random.between(0, 60)));
    const qz_String key(text.c_str());
    const qz_String same(text.c_str());
    EXPECT_LT(QZ_hash(key, size), size);
    EXPECT_EQ(QZ_hash(key, size), QZ_hash(same, size));
    const auto number = static_cast<unsigned>(random.between(0, 4294967295LL));
    EXPECT_LT(QZ_hash(number, size), size);
    EXPECT_EQ(QZ_hash(number, size), QZ_hash(number, size));
  }
}

TEST(QzHash, SizeOne_IsAlwaysIndexZero) {
  EXPECT_EQ(QZ_hash(qz_String("anything"), 1), 0U);
  EXPECT_EQ(QZ_hash(4294967295U, 1), 0U);
}

// Keys that compare as equal must meet in one bucket, and comparing stops at the terminator.
TEST(QzHash, KeysEqualUpToTheTerminator_ShareABucket) {
  qz_String longer;
  longer._assign("key\0rest", 8);
  EXPECT_EQ(QZ_hash(longer, 65537), QZ_hash(qz_String("key"), 65537));
}

TEST(QzHash, ManyKeys_UseMostBuckets) {
  std::set<unsigned> used_by_texts;
  std::set<unsigned> used_by_numbers;
  for (unsigned i = 0; i < 1000; ++i) {
    used_by_texts.insert(QZ_hash(qz_String(("attribute" + std::to_string(i)).c_str()), 101));
    used_by_numbers.insert(QZ_hash(i * 7, 101));
  }
  EXPECT_GT(used_by_texts.size(), 90U);
  EXPECT_GT(used_by_numbers.size(), 90U);
}

}  // namespace
