#include "counter/free_records.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;

TEST(FreeRecords, Empty_ContainsNothing) {
  const FreeRecords records;
  EXPECT_EQ(records.first(), FreeRecords::kNone);
  EXPECT_FALSE(records.contains(0));
  EXPECT_FALSE(records.contains(FreeRecords::kCapacity - 1));
}

TEST(FreeRecords, OneNumber_FoundAndGoneAfterErase) {
  for (const std::uint32_t number : {0U, 1U, 63U, 64U, 4095U, 4096U, 262143U, 262144U, FreeRecords::kCapacity - 1}) {
    SCOPED_TRACE(number);
    FreeRecords records;
    records.insert(number);
    EXPECT_TRUE(records.contains(number));
    EXPECT_FALSE(records.contains(number ^ 1));
    EXPECT_EQ(records.first(), number);
    records.erase(number);
    EXPECT_FALSE(records.contains(number));
    EXPECT_EQ(records.first(), FreeRecords::kNone);
  }
}

TEST(FreeRecords, SeveralNumbers_TheLowestIsFirst) {
  FreeRecords records;
  for (const std::uint32_t number : {300000U, 5000U, 70U, 5U}) {
    records.insert(number);
    EXPECT_EQ(records.first(), number);
  }
  for (const std::uint32_t number : {5U, 70U, 5000U, 300000U}) {
    EXPECT_EQ(records.first(), number);
    records.erase(number);
  }
  EXPECT_EQ(records.first(), FreeRecords::kNone);
}

TEST(FreeRecords, RandomNumbers_SameAsASet) {
  SeededRandom random;
  FreeRecords records;
  std::set<std::uint32_t> model;
  for (int i = 0; i < 100000; ++i) {
    const auto number = static_cast<std::uint32_t>(random.between(0, random.one_in(2) ? 200 : 300000));
    ASSERT_EQ(records.contains(number), model.count(number) == 1);
    if (model.erase(number) == 1) {
      records.erase(number);
    } else {
      records.insert(number);
      model.insert(number);
    }
    ASSERT_EQ(records.first(), model.empty() ? FreeRecords::kNone : *model.begin());
  }
}

}  // namespace
