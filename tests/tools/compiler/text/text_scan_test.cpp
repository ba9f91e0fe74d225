#include "tools/compiler/text/text_scan.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_compiler {
namespace {

bool is_line_break(char character) { return character == '\n' || character == '\r'; }
bool is_printable(char character) { return character >= ' ' && character <= '~'; }

TEST(TextScan, EveryByteAtEveryPlaceOfTextsOfManyLengths_IsFoundAsByLookingAtEach) {
  for (std::size_t size = 0; size <= 70; ++size) {
    std::string text(size, 'x');
    EXPECT_FALSE(has_line_break(text)) << size;
    EXPECT_TRUE(is_printable_ascii(text)) << size;
    for (std::size_t place = 0; place < size; ++place) {
      for (int byte = 0; byte < 256; ++byte) {
        text[place] = static_cast<char>(byte);
        ASSERT_EQ(has_line_break(text), is_line_break(text[place])) << size << ' ' << place << ' ' << byte;
        ASSERT_EQ(is_printable_ascii(text), is_printable(text[place])) << size << ' ' << place << ' ' << byte;
      }
      text[place] = 'x';
    }
  }
}

TEST(TextScan, NeighboursOfTheText_DoNotCount) {
  const std::string text = "\n" + std::string(40, 'x') + "\n";
  for (std::size_t size = 0; size <= 40; ++size) {
    EXPECT_FALSE(has_line_break(std::string_view(text).substr(1, size))) << size;
    EXPECT_TRUE(is_printable_ascii(std::string_view(text).substr(41 - size, size))) << size;
  }
}

}  // namespace
}  // namespace qzlog_compiler
