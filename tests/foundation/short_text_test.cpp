#include "foundation/short_text.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

constexpr std::size_t kLongest = 80;

/// Different bytes, zero bytes and bytes above 127 among them.
std::string bytes(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; i < length; ++i) text += static_cast<char>(i * 37 % 256);
  return text;
}

TEST(CopyText, EveryLength_CopiesThoseBytesOnly) {
  for (std::size_t length = 0; length <= kLongest; ++length) {
    const std::string text = bytes(length);
    std::string target(length + 2, '.');
    copy_text(&target[1], text.data(), length);
    EXPECT_EQ(target, "." + text + ".") << length;
  }
}

TEST(CopyText, ExactMemory_NothingBesideIsRead) {
  for (std::size_t length = 1; length <= kLongest; ++length) {
    const std::string text = bytes(length);
    const std::unique_ptr<char[]> source(new char[length]);
    const std::unique_ptr<char[]> target(new char[length]);
    text.copy(source.get(), length);
    copy_text(target.get(), source.get(), length);
    EXPECT_EQ(std::string(target.get(), length), text);
  }
}

TEST(CopyText, OverlappingEitherWay_AsThoughCopiedAside) {
  for (std::size_t length = 0; length <= kLongest; ++length) {
    for (std::size_t from = 0; from <= 40; from += 5) {
      for (std::size_t to = 0; to <= 40; ++to) {
        std::string text = bytes(40 + kLongest);
        std::string wanted = text;
        wanted.replace(to, length, text, from, length);
        copy_text(&text[to], &text[from], length);
        ASSERT_EQ(text, wanted) << length << " bytes from " << from << " to " << to;
      }
    }
  }
}

TEST(TextMemory, EveryLength_HoldsTheTextAndItsTerminator) {
  std::vector<char*> texts;
  for (unsigned length = 0; length <= 2 * kShortTextLength; ++length) {
    texts.push_back(allocate_text(length));
    std::char_traits<char>::assign(texts.back(), length, 'a');
    texts.back()[length] = '\0';
  }
  for (unsigned length = 0; length < texts.size(); ++length) {
    EXPECT_EQ(std::string(texts[length]), std::string(length, 'a'));
    release_text(texts[length], length);
  }
}

TEST(TextMemory, NoMemory_Throws) {
  for (const unsigned length : {0U, kShortTextLength, kShortTextLength + 1, 5000U}) {
    // More than a thread keeps.
    std::vector<char*> texts(20, nullptr);
    FailEveryAllocation([&] {
      for (char*& text : texts) {
        if (text == nullptr) text = allocate_text(length);
      }
    });
    for (char* const text : texts) release_text(text, length);
  }
}

}  // namespace
