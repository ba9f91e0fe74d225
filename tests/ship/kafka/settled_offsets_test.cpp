#include "ship/kafka/settled_offsets.h"

#include <gtest/gtest.h>

namespace qzlog_ship {
namespace {

TEST(SettledOffsetsTest, NothingSettled_HasNoNext) {
  SettledOffsets offsets;
  EXPECT_EQ(offsets.next(), std::nullopt);
  offsets.give_out(4);
  EXPECT_EQ(offsets.next(), std::nullopt);
}

TEST(SettledOffsetsTest, Next_IsBehindWhatIsSettledWithoutAGap) {
  SettledOffsets offsets;
  for (const std::int64_t offset : {4, 5, 7, 9}) offsets.give_out(offset);  // a topic may have left some out
  offsets.settle(5);
  EXPECT_EQ(offsets.next(), std::nullopt);
  offsets.settle(4);
  EXPECT_EQ(offsets.next(), 6);
  EXPECT_EQ(offsets.next(), 6) << "until the group was told";
  offsets.tell(6);
  EXPECT_EQ(offsets.next(), std::nullopt);
  offsets.settle(9);
  EXPECT_EQ(offsets.next(), std::nullopt);
  offsets.settle(7);
  EXPECT_EQ(offsets.next(), 10);
}

TEST(SettledOffsetsTest, WhatHasNoRecords_IsPassed) {
  SettledOffsets offsets;
  offsets.pass_to(7);
  EXPECT_EQ(offsets.next(), 7);
  offsets.give_out(7);
  offsets.pass_to(8);
  EXPECT_EQ(offsets.next(), 7) << "what was given out is not settled";
  offsets.pass_to(12);
  EXPECT_EQ(offsets.next(), 7);
  offsets.settle(7);
  EXPECT_EQ(offsets.next(), 12);
}

TEST(SettledOffsetsTest, WhatWasNotGivenOut_ChangesNothing) {
  SettledOffsets offsets;
  offsets.give_out(4);
  offsets.settle(3);
  offsets.settle(8);
  EXPECT_EQ(offsets.next(), std::nullopt);
}

}  // namespace
}  // namespace qzlog_ship
