#include "tools/report/passed_over.h"

#include <gtest/gtest.h>

namespace {

using qzlog_tool::PassedOver;

TEST(PassedOver, Nothing_HasNoText) {
  PassedOver nothing;
  nothing.add_several("line", "long-line", "a.jsonl", 0);
  EXPECT_TRUE(nothing.is_empty());
  EXPECT_EQ(nothing.text(), "");
}

TEST(PassedOver, One_IsInTheSingular) {
  PassedOver over;
  over.add("line", "long-line", "a.jsonl", 7);
  EXPECT_FALSE(over.is_empty());
  EXPECT_EQ(over.text(), "1 line passed over (1 long-line); the first at a.jsonl:7");
}

TEST(PassedOver, Several_AreCountedByUnitAndReasonAndThePlaceIsThatOfTheFirst) {
  PassedOver over;
  over.add_at("names section", "bad-names-section", "s.ldf", 90);
  over.add("line", "long-line", "a.jsonl", 7);
  over.add("line", "bad-json", "a.jsonl", 9);
  over.add_several("line", "long-line", "b.jsonl", 3, 1);
  over.add_several("file", "deleted", "logs/s.20261121.0001", 2);
  EXPECT_EQ(
      over.text(),
      "1 names section, 5 lines and 2 files passed over (4 long-line, 2 deleted, 1 bad-names-section, 1 bad-json);"
      " the first at s.ldf, offset 90");
}

TEST(PassedOver, ManyReasons_TheCommonestAreNamed) {
  PassedOver over;
  for (const char* const why : {"a", "b", "c", "d", "e"}) over.add("line", why, "a.jsonl", 1);
  EXPECT_EQ(over.text(), "5 lines passed over (1 a, 1 b, 1 c, 1 d, 1 e); the first at a.jsonl:1");
  over.add_several("line", "f", "a.jsonl", 2);
  over.add("line", "g", "a.jsonl", 1);
  EXPECT_EQ(over.text(), "8 lines passed over (2 f, 1 a, 1 b, 1 c and 3 others); the first at a.jsonl:1");
}

TEST(PassedOver, OnePlaceTwice_IsCountedOnce) {
  PassedOver over;
  over.add_at("names section", "bad-names-section", "s.ldf", 90);
  over.add_at("names section", "bad-names-section", "s.ldf", 90);
  over.add_at("names section", "bad-names-section", "t.ldf", 90);
  EXPECT_EQ(over.text(), "2 names sections passed over (2 bad-names-section); the first at s.ldf, offset 90");
}

TEST(PassedOver, FileWithControlCharacters_IsShownWithEscapes) {
  PassedOver over;
  over.add("line", "bad-json", "a\x1b", 1);
  EXPECT_EQ(over.text(), "1 line passed over (1 bad-json); the first at a\\u001B:1");
}

TEST(PassedOver, Cleared_BeginsAnew) {
  PassedOver over;
  over.add("line", "bad-json", "a.jsonl", 1);
  over.clear();
  EXPECT_TRUE(over.is_empty());
  over.add("line", "bad-json", "a.jsonl", 2);
  EXPECT_EQ(over.text(), "1 line passed over (1 bad-json); the first at a.jsonl:2");
}

}  // namespace
