#include "lines/json_escape.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "lines/line_output.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

namespace qzlog {
namespace {

using qz_test::SeededRandom;

struct Escaped {
  std::string json;
  bool is_valid;

  bool operator==(const Escaped&) const = default;
};

template <typename Block>
Escaped escaped_by(std::string_view text) {
  // On the heap and no longer than it is: a sanitizer sees what is read behind it.
  const std::unique_ptr<char[]> copy(new char[text.size()]);
  text.copy(copy.get(), text.size());
  Escaped result;
  LineOutput output(result.json);
  const EscapedText escaped = escape_json_by<Block>(copy.get(), text.size(), output.end(), output);
  output.count_up_to(escaped.end);
  result.is_valid = escaped.is_valid;
  output.finish();
  return result;
}

/// One character after the other.
Escaped plainly_escaped(std::string_view text) {
  Escaped result{"", true};
  while (!text.empty()) {
    char target[kMaxJsonPiece];
    const JsonPiece piece = write_json_piece(text.data(), text.size(), target);
    result.json.append(target, piece.written);
    result.is_valid = result.is_valid && piece.is_valid;
    text.remove_prefix(piece.taken);
  }
  return result;
}

void check(std::string_view text) {
  const Escaped expected = plainly_escaped(text);
  EXPECT_EQ(escaped_by<WordJsonBlock>(text), expected) << testing::PrintToString(text);
  EXPECT_EQ(escaped_by<JsonBlock>(text), expected) << testing::PrintToString(text);
}

TEST(EscapeJson, EveryByteAtEveryPlace_AsOneByOne) {
  for (std::size_t length = 1; length <= 35; ++length) {
    for (std::size_t place = 0; place < length; ++place) {
      for (unsigned byte = 0; byte < 256; ++byte) {
        std::string text(length, 'x');
        text[place] = static_cast<char>(byte);
        check(text);
      }
    }
  }
}

TEST(EscapeJson, PiecesOfCharactersAtEveryPlace_AsOneByOne) {
  const char* const pieces[] = {
      "\u00E4",           "\u20AC",     "\U0001F600", "\u0800",       "\uD7FF",       "\xED\xA0\x80",
      "\xE0\x9F\xBF",     "\xE2\x82",   "\xE2",       "\xC3",         "\xF0\x9F\x98", "\xC0\x80",
      "\xF4\x90\x80\x80", "\xE2\x82\"", "\xC3\\",     "\xE2\xC3\xA4", "\xC3\xC3\xA4", "\xE4\xBD\xA0\xE5\xA5\xBD"};
  for (const char* const piece : pieces) {
    for (std::size_t before = 0; before <= 33; ++before) {
      for (const std::size_t behind : {0U, 1U, 2U, 15U, 16U, 17U}) {
        check(std::string(before, 'x') + piece + std::string(behind, 'y'));
        check(std::string(before, 'x') + piece + piece + std::string(behind, 'y'));
      }
    }
  }
}

TEST(EscapeJson, RandomTexts_AsOneByOne) {
  const std::string_view parts[] = {"a",          "plain text ", "\u00E4",     "\u00DF", "\u20AC", "\u4F60\u597D",
                                    "\U0001F600", "\"",          "\\",         "\n",     "\x1F",   "\x7F",
                                    "\xC3",       "\x80",        "\xE2\x82",   "\xFF",   "\xED",   "\xF0\x9F",
                                    "\xE0",       "\u0800",      "0123456789", "\u07FF"};
  SeededRandom random;
  for (int round = 0; round < qz_test::rounds(40000); ++round) {
    std::string text;
    for (std::size_t count = random.below(24); count > 0; --count) text += parts[random.below(std::size(parts))];
    check(text);
    check(random.text(random.below(80)));
  }
}

TEST(EscapeJson, LongTexts_LeaveTheChunk) {
  for (const char* const part : {"x", "\xFF", "\u20AC", "\n"}) {
    std::string text;
    for (std::size_t i = 0; i < 3 * LineOutput::kChunkBytes; ++i) text += part;
    EXPECT_TRUE(escaped_by<JsonBlock>(text) == plainly_escaped(text)) << part;
  }
}

}  // namespace
}  // namespace qzlog
