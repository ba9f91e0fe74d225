#include "lines/base64_decode.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/support.h"

namespace {

using qzlog::decode_base64;

TEST(DecodeBase64, KnownTexts_GiveTheirBytes) {
  const struct {
    const char* text;
    const char* bytes;
  } cases[] = {{"", ""},        {"Zg==", "f"},        {"Zm8=", "fo"},
               {"Zm9v", "foo"}, {"Zm9vYg==", "foob"}, {"+/+/", "\xFB\xFF\xBF"}};
  std::string bytes = "former";
  for (const auto& row : cases) {
    EXPECT_TRUE(decode_base64(row.text, bytes)) << row.text;
    EXPECT_EQ(bytes, row.bytes) << row.text;
  }
}

TEST(DecodeBase64, OtherTexts_AreRefused) {
  std::string bytes;
  for (const char* const text : {"Z", "Zg", "Zg=", "Zg===", "Z===", "====", "Zh==", "Zm9=", "Zm 9", "Zm9v\n", "Zm-v",
                                 "=m9v", "Zg==Zg==", "Zm9v====", "Z\xC3\xA4=="}) {
    EXPECT_FALSE(decode_base64(text, bytes)) << text;
  }
}

// The plain algorithm, the other way round.
std::string encoded(const std::string& bytes) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bits;
  for (const char byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) bits += (static_cast<unsigned char>(byte) >> bit & 1) != 0 ? '1' : '0';
  }
  while (bits.size() % 6 != 0) bits += '0';
  std::string text;
  for (std::size_t at = 0; at < bits.size(); at += 6) text += kDigits[std::stoul(bits.substr(at, 6), nullptr, 2)];
  while (text.size() % 4 != 0) text += '=';
  return text;
}

TEST(DecodeBase64, RandomBytes_ComeBack) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 2000; ++round) {
    std::string bytes;
    for (std::size_t count = random.below(40); count > 0; --count) bytes += static_cast<char>(random.below(256));
    std::string decoded;
    ASSERT_TRUE(decode_base64(encoded(bytes), decoded));
    ASSERT_EQ(decoded, bytes);
  }
}

}  // namespace
