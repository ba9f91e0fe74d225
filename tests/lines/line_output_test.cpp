#include "lines/line_output.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace qzlog {
namespace {

TEST(LineOutput, Finished_EverythingIsBehindTheText) {
  std::string text = "before ";
  LineOutput output(text);
  output.append('a');
  output.append("bc");
  char* const room = output.reserve(3);
  std::memcpy(room, "def", 3);
  output.count_in(1);
  output.count_up_to(room + 3);
  output.append("ghi", 3);
  output.finish();
  EXPECT_EQ(text, "before abcdefghi");
}

TEST(LineOutput, MoreThanAChunk_IsWhole) {
  std::string text;
  std::string expected;
  LineOutput output(text);
  for (std::size_t length = 0; length < LineOutput::kChunkBytes + 50; length += 7) {
    const std::string piece(length, static_cast<char>('a' + length % 26));
    output.append(piece.data(), piece.size());
    expected += piece;
  }
  output.finish();
  EXPECT_EQ(text, expected);
}

TEST(LineOutput, EndHandedAround_EverythingIsThere) {
  std::string text = "before ";
  std::string expected = text;
  LineOutput output(text);
  char* end = output.end();
  for (int i = 0; i < 1000; ++i) {
    const std::string number = std::to_string(i);
    end = output.reserve_behind(end, number.size());
    end = std::copy(number.begin(), number.end(), end);
    expected += number;
  }
  output.count_up_to(end);
  output.append('.');
  output.finish();
  EXPECT_EQ(text, expected + '.');
}

TEST(LineOutput, NotFinished_TheTextIsAsItWas) {
  std::string text = "before";
  {
    LineOutput output(text);
    for (int i = 0; i < 1000; ++i) output.append("0123456789");
    EXPECT_GT(text.size(), 6U);
  }
  EXPECT_EQ(text, "before");
}

}  // namespace
}  // namespace qzlog
