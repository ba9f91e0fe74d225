#include "tools/compiler/file/ldf_cursor.h"

#include <gtest/gtest.h>

#include <vector>

namespace qzlog_compiler {
namespace {

using namespace std::string_view_literals;

TEST(LdfCursor, Fields_AreTakenInOrderAndHandedToTheSink) {
  std::vector<std::string> seen;
  const LdfFieldSink sink = [&](const LdfField& field) {
    seen.push_back(std::to_string(field.offset) + " " + field.path() + " " + std::to_string(field.bytes.size()));
  };
  LdfCursor cursor("..\0\0\1\2\0\0\0\3ab\0\0\0\0\0"sv, 2, &sink);
  EXPECT_EQ(cursor.take_int4("number"), 0x102U);
  cursor.set_item("list", 4);
  const LdfText text = cursor.take_text("text");
  EXPECT_EQ(text.text(), "ab");
  EXPECT_EQ(text.offset, 6U);
  EXPECT_TRUE(text.is_regular());
  cursor.leave_list();
  EXPECT_EQ(cursor.take_text("empty").text(), "");
  EXPECT_FALSE(cursor.failed());
  EXPECT_EQ(seen, (std::vector<std::string>{"2 number 4", "6 list[4].text 4", "10 list[4].text 3", "13 empty 4"}));
}

TEST(LdfCursor, TextWithoutItsEnd_FailsWhereItsBytesBegin) {
  std::size_t partial = 0;
  const LdfFieldSink sink = [&](const LdfField& field) { partial = field.bytes.size(); };
  LdfCursor cursor("\0\0\0\x09xyz"sv, 0, &sink);
  cursor.set_region("a text");
  const LdfText text = cursor.take_text("name");
  EXPECT_FALSE(text.whole);
  EXPECT_EQ(text.stored, "");
  ASSERT_TRUE(cursor.damage());
  EXPECT_EQ(cursor.damage()->offset, 4U);
  EXPECT_EQ(cursor.damage()->reason, "the file ends within a text");
  EXPECT_EQ(cursor.damage()->detail, "name takes 9 bytes from here, and the file has 3");
  EXPECT_EQ(partial, 3U);
  EXPECT_EQ(cursor.take_int4("next"), 0U);
  EXPECT_EQ(cursor.offset(), 4U);
}

TEST(LdfCursor, OffsetBehindTheEnd_Fails) {
  LdfCursor cursor("abc", 0xFFFFFFFF);
  cursor.take_int4("number");
  ASSERT_TRUE(cursor.damage());
  EXPECT_EQ(cursor.damage()->offset, 0xFFFFFFFFU);
}

TEST(LdfText, TextsThatNoWriterMakes_AreNotRegular) {
  EXPECT_TRUE((LdfText{0, "a\0"sv, true}).is_regular());
  EXPECT_TRUE((LdfText{0, "", true}).is_regular());
  EXPECT_FALSE((LdfText{0, "a"sv, true}).is_regular());
  EXPECT_FALSE((LdfText{0, "a\0b\0"sv, true}).is_regular());
}

}  // namespace
}  // namespace qzlog_compiler
