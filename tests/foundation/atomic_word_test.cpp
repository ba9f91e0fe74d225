#include "foundation/atomic_word.h"

#include <gtest/gtest.h>

using namespace qzlog;

namespace {

TEST(AtomicWord, StoreThenLoad_GivesTheValue) {
  unsigned word = 1;
  store_word(word, 4294967295U);
  EXPECT_EQ(load_word(word), 4294967295U);
  EXPECT_EQ(word, 4294967295U);
}

TEST(AtomicWord, Bool_StaysAPlainBool) {
  bool word = true;
  store_word(word, false);
  EXPECT_FALSE(load_word(word));
  const bool fixed = true;
  EXPECT_TRUE(load_word(fixed));
}

}  // namespace
