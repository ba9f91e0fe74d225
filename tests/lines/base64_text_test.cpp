#include "lines/base64_text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace qzlog {
namespace {

std::string written(std::string_view bytes) {
  std::string text;
  LineOutput out(text);
  append_base64(bytes.data(), bytes.size(), out);
  out.finish();
  return text;
}

TEST(AppendBase64, VectorsOfRfc4648) {
  EXPECT_EQ(written(""), "");
  EXPECT_EQ(written("f"), "Zg==");
  EXPECT_EQ(written("fo"), "Zm8=");
  EXPECT_EQ(written("foo"), "Zm9v");
  EXPECT_EQ(written("foob"), "Zm9vYg==");
  EXPECT_EQ(written("fooba"), "Zm9vYmE=");
  EXPECT_EQ(written("foobar"), "Zm9vYmFy");
}

TEST(AppendBase64, EveryDigit) {
  std::string_view bytes(
      "\x00\x10\x83\x10\x51\x87\x20\x92\x8B\x30\xD3\x8F\x41\x14\x93\x51\x55\x97\x61\x96\x9B\x71\xD7\x9F"
      "\x82\x18\xA3\x92\x59\xA7\xA2\x9A\xAB\xB2\xDB\xAF\xC3\x1C\xB3\xD3\x5D\xB7\xE3\x9E\xBB\xF3\xDF\xBF",
      48);
  EXPECT_EQ(written(bytes), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(AppendBase64, MoreThanAChunk_IsWhole) {
  const std::string text = written(std::string(9999, '\xFF'));
  EXPECT_EQ(text, std::string(13332, '/'));
}

}  // namespace
}  // namespace qzlog
