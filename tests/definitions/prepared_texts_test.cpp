#include "definitions/prepared_texts.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/definition_memory_limit.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace qz_test {
namespace {

constexpr std::size_t kTextBytes = 100000;
// Of which a quarter is for texts: room for four of them, and not for five.
constexpr std::size_t kLimit = 4 * (4 * kTextBytes + kTextBytes / 2);

/// As large as is said, and counted while it lives.
class Prepared : public PreparedMessage {
 public:
  static inline int living = 0;

  Prepared() {
    set_memory_bytes(kTextBytes);
    ++living;
  }
  ~Prepared() override { --living; }
  void prefetch_parts() const override {}
};

class PreparedTextsTest : public testing::Test {
 protected:
  PreparedTextsTest() { drop_all(); }
  ~PreparedTextsTest() override { drop_all(); }

  static void drop_all() {
    const DefinitionMemoryLimit none(0);
    PreparedTexts::fit_memory();
  }
  static const PreparedMessage* keep(MessagePath path, const std::string& content) {
    const PreparedMessageRef prepared(new Prepared);
    PreparedTexts::keep(path, content, *prepared.get());
    return prepared.get();
  }
  static bool has(const std::string& content) {
    return static_cast<bool>(PreparedTexts::find(MessagePath::kNarrow, content));
  }

  DefinitionMemoryLimit limit_{kLimit};
};

TEST_F(PreparedTextsTest, KeptForm_IsFoundByItsContentAndPath) {
  const PreparedMessage* const narrow = keep(MessagePath::kNarrow, "text");
  const PreparedMessage* const icu = keep(MessagePath::kIcu, "text");
  EXPECT_EQ(PreparedTexts::find(MessagePath::kNarrow, "text").get(), narrow);
  EXPECT_EQ(PreparedTexts::find(MessagePath::kIcu, "text").get(), icu);
  EXPECT_FALSE(has("tex"));
  EXPECT_FALSE(has(""));
  EXPECT_FALSE(has(std::string("text\0", 5)));
}

TEST_F(PreparedTextsTest, SecondFormOfAText_LeavesTheFirst) {
  const PreparedMessage* const first = keep(MessagePath::kNarrow, "text");
  keep(MessagePath::kNarrow, "text");
  EXPECT_EQ(PreparedTexts::find(MessagePath::kNarrow, "text").get(), first);
  EXPECT_EQ(Prepared::living, 1);
}

TEST_F(PreparedTextsTest, FullMemory_WhatWasNotAskedForLongestGoes) {
  for (const char* const content : {"1", "2", "3", "4"}) keep(MessagePath::kNarrow, content);
  EXPECT_TRUE(has("1"));
  keep(MessagePath::kNarrow, "5");
  EXPECT_FALSE(has("2"));
  EXPECT_TRUE(has("3"));
  keep(MessagePath::kNarrow, "6");
  EXPECT_FALSE(has("4"));
  for (const char* const content : {"1", "3", "5", "6"}) EXPECT_TRUE(has(content)) << content;
  EXPECT_EQ(Prepared::living, 4);
}

TEST_F(PreparedTextsTest, SmallerLimit_DropsAtOnce) {
  for (const char* const content : {"1", "2", "3", "4"}) keep(MessagePath::kNarrow, content);
  const DefinitionMemoryLimit smaller(kLimit / 2);
  EXPECT_EQ(Prepared::living, 2);
  EXPECT_TRUE(has("3"));
  EXPECT_TRUE(has("4"));
}

TEST_F(PreparedTextsTest, FormThatIsDropped_LivesForWhoHasIt) {
  keep(MessagePath::kNarrow, "text");
  const PreparedMessageRef held = PreparedTexts::find(MessagePath::kNarrow, "text");
  drop_all();
  EXPECT_FALSE(has("text"));
  EXPECT_EQ(Prepared::living, 1);
  EXPECT_EQ(held->memory_bytes(), kTextBytes);
}

TEST_F(PreparedTextsTest, NoMemory_NothingIsChanged) {
  keep(MessagePath::kNarrow, "1");
  const PreparedMessageRef prepared(new Prepared);
  unsigned failed = 0;
  for (unsigned nth = 1; failed + 1 == nth; ++nth) {
    const AllocationFailure failure(nth);
    try {
      PreparedTexts::keep(MessagePath::kNarrow, "a text that is too long to be held in place", *prepared.get());
    } catch (const std::bad_alloc&) {
      ++failed;
    }
  }
  EXPECT_GE(failed, 3U);
  EXPECT_TRUE(has("1"));
  EXPECT_TRUE(has("a text that is too long to be held in place"));
}

}  // namespace
}  // namespace qz_test
