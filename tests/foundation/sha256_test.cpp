#include "foundation/sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "tests/support/seeded_random.h"

namespace qzlog {
namespace {

std::string hexadecimal(const Sha256::Digest& digest) {
  std::string text;
  for (const unsigned char byte : digest) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 0xFU];
  }
  return text;
}

std::string sha256(std::string_view bytes) {
  Sha256 hash;
  hash.add(bytes.data(), bytes.size());
  return hexadecimal(hash.digest());
}

// The examples of FIPS 180, and of NIST's validation program.
TEST(Sha256, VectorsOfTheStandard) {
  EXPECT_EQ(sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(
      sha256("abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopq"
             "rstnopqrstu"),
      "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1");
  EXPECT_EQ(sha256(std::string(1000000, 'a')), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
  EXPECT_EQ(sha256("\xbd"), "68325720aabd7c82f30f554b313d0570c95accbb7dc4b5aae11204c08ffe732b");
}

// Where the padding begins a block of its own.
TEST(Sha256, LengthsAroundABlock) {
  EXPECT_EQ(sha256(std::string(55, '\0')), "02779466cdec163811d078815c633f21901413081449002f24aa3e80f0b88ef7");
  EXPECT_EQ(sha256(std::string(56, '\0')), "d4817aa5497628e7c77e6b606107042bbba3130888c5f47a375e6179be789fbb");
  EXPECT_EQ(sha256(std::string(57, '\0')), "65a16cb7861335d5ace3c60718b5052e44660726da4cd13bb745381b235a1785");
  EXPECT_EQ(sha256(std::string(64, '\0')), "f5a5fd42d16a20302798ef6ed309979b43003d2320d9f0e8ea9831a92759fb4b");
}

TEST(Sha256, GivenInPieces_TheSame) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 200; ++round) {
    const std::string bytes = random.text(random.below(400));
    Sha256 hash;
    std::size_t at = 0;
    while (at < bytes.size()) {
      const std::size_t piece = std::min(random.below(130), bytes.size() - at);
      hash.add(bytes.data() + at, piece);
      at += piece;
      EXPECT_EQ(hexadecimal(hash.digest()), sha256(std::string_view(bytes).substr(0, at)));
    }
    EXPECT_EQ(hexadecimal(hash.digest()), sha256(bytes));
  }
}

TEST(WriteShortDigest, TheFirstSixteenDigits) {
  Sha256 hash;
  hash.add("abc", 3);
  char text[kShortDigestDigits + 1] = "................";
  write_short_digest(hash.digest(), text);
  EXPECT_STREQ(text, "ba7816bf8f01cfea");
}

}  // namespace
}  // namespace qzlog
