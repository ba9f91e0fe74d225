#include "lines/quote_index.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/seeded_random.h"

namespace {

using qzlog::QuoteIndex;

constexpr std::size_t kMaximumBytes = 1000;

/// Reads `text`, with blanks behind it.
bool read(QuoteIndex& index, const std::string& text) {
  const std::string padded = text + std::string(QuoteIndex::kPieceBytes, ' ');
  return index.read(padded.data(), text.size());
}

std::vector<std::size_t> places_of(const QuoteIndex& index, std::size_t size) {
  std::vector<std::size_t> result;
  QuoteIndex::Places places = index.places();
  do {
    result.push_back(places.next());
  } while (result.back() < size);
  return result;
}

std::vector<std::size_t> plain_places(const std::string& text) {
  std::vector<std::size_t> result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '"') result.push_back(at);
    if (text[at] == '\\') ++at;
  }
  result.push_back(text.size());
  return result;
}

TEST(QuoteIndex, EveryLength_QuotesAndTheEndAreFound) {
  QuoteIndex index;
  index.reserve(kMaximumBytes);
  for (std::size_t size = 0; size <= 300; ++size) {
    for (const std::string& text : {std::string(size, '"'), std::string(size, 'x')}) {
      ASSERT_TRUE(read(index, text));
      EXPECT_EQ(places_of(index, size), plain_places(text)) << size;
    }
  }
}

TEST(QuoteIndex, LongestText_IsRead) {
  QuoteIndex index;
  index.reserve(kMaximumBytes);
  const std::string text = std::string(kMaximumBytes - 1, 'x') + '"';
  ASSERT_TRUE(read(index, text));
  EXPECT_EQ(places_of(index, text.size()), (std::vector<std::size_t>{kMaximumBytes - 1, kMaximumBytes}));
}

TEST(QuoteIndex, EveryByteAtEveryPlace_RefusedWhereItNeedsASecondLook) {
  QuoteIndex index;
  index.reserve(kMaximumBytes);
  for (unsigned byte = 0; byte < 256; ++byte) {
    for (std::size_t at = 0; at < 70; ++at) {
      std::string text(70, 'x');
      text[at] = static_cast<char>(byte);
      ASSERT_EQ(read(index, text), byte >= 0x20) << byte << " at " << at;
      ASSERT_EQ(index.has_high_bytes(), byte >= 0x80) << byte << " at " << at;
      ASSERT_EQ(index.has_backslashes(), byte == '\\') << byte << " at " << at;
      ASSERT_EQ(places_of(index, text.size()), plain_places(text)) << byte << " at " << at;
    }
  }
}

TEST(QuoteIndex, NextText_NothingOfTheLastIsLeft) {
  QuoteIndex index;
  index.reserve(kMaximumBytes);
  EXPECT_FALSE(read(index, std::string(200, '"') + "\n\xFF\\"));
  ASSERT_TRUE(read(index, "x\"x"));
  EXPECT_FALSE(index.has_high_bytes());
  EXPECT_FALSE(index.has_backslashes());
  EXPECT_EQ(places_of(index, 3), (std::vector<std::size_t>{1, 3}));
}

TEST(QuoteIndex, RandomTexts_AsByteForByte) {
  qz_test::SeededRandom random;
  QuoteIndex index;
  index.reserve(kMaximumBytes);
  for (int round = 0; round < 5000; ++round) {
    std::string text(random.below(kMaximumBytes + 1), ' ');
    const auto quotes_in_ten = random.below(11);
    for (char& character : text) {
      character = random.below(10) < quotes_in_ten ? '"' : random.below(10) < quotes_in_ten ? '\\' : 'a';
    }
    ASSERT_TRUE(read(index, text));
    ASSERT_EQ(places_of(index, text.size()), plain_places(text)) << text;
  }
}

}  // namespace
