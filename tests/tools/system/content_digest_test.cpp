#include "tools/system/content_digest.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

// The algorithm's published test vectors.
TEST(ContentDigest, KnownContents_HaveTheKnownDigests) {
  EXPECT_EQ(content_digest(""), "cbf29ce484222325");
  EXPECT_EQ(content_digest("a"), "af63dc4c8601ec8c");
  EXPECT_EQ(content_digest("foobar"), "85944171f73967e8");
  EXPECT_EQ(content_digest(std::string("\xFF\0", 2)), content_digest(std::string("\xFF\0", 2)));
  EXPECT_NE(content_digest(std::string("\0", 1)), content_digest(""));
}

TEST(IsContentDigest, SixteenSmallHexadecimalDigits_Alone) {
  EXPECT_TRUE(is_content_digest("0123456789abcdef"));
  for (const char* const text : {"", "0123456789abcde", "0123456789abcdef0", "0123456789ABCDEF", "0123456789abcdeg"}) {
    EXPECT_FALSE(is_content_digest(text)) << text;
  }
}

}  // namespace
}  // namespace qzlog_tool
