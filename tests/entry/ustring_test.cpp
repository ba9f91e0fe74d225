#include "entry/ustring.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/thread_blocks.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::FailEveryAllocation;

void expect_no_text(const _qz_LOG_ustring& value) {
  EXPECT_EQ(value.length, 0U);
  EXPECT_EQ(value.data, nullptr);
  EXPECT_STREQ(value.text(), "");
}

void expect_text(const _qz_LOG_ustring& value, const std::string& text) {
  EXPECT_EQ(value.length, text.size());
  ASSERT_NE(value.data, nullptr);
  EXPECT_EQ(std::string(value.data, value.length + 1), text + '\0');
  EXPECT_EQ(value.text(), value.data);
}

TEST(Ustring, Default_NoText) { expect_no_text(_qz_LOG_ustring()); }

TEST(Ustring, FromNull_NoText) { expect_no_text(_qz_LOG_ustring(nullptr)); }

TEST(Ustring, CopyOfOneFromNull_NoTextEither) {
  const _qz_LOG_ustring original(nullptr);
  const _qz_LOG_ustring copy(original);
  expect_no_text(copy);
}

TEST(Ustring, FromText_CopiesItWithItsTerminator) {
  for (const std::string& text : {std::string("a"), std::string("\xE3\x83\xAD\xE3\x82\xB0"), std::string(8192, 'x')}) {
    std::string source = text;
    const _qz_LOG_ustring value(source.c_str());
    source.assign(source.size(), '#');
    expect_text(value, text);
  }
}

TEST(Ustring, FromEmptyText_IsATextOfLengthZero) { expect_text(_qz_LOG_ustring(""), ""); }

TEST(Ustring, Copy_IsIndependent) {
  _qz_LOG_ustring original("text");
  const _qz_LOG_ustring copy(original);
  EXPECT_NE(copy.data, original.data);
  original.set_zero();
  expect_text(copy, "text");
  expect_no_text(original);
}

TEST(Ustring, CopyOfZeroBytesInside_KeepsTheLength) {
  _qz_LOG_ustring original("abc");
  original.data[1] = '\0';
  const _qz_LOG_ustring copy(original);
  expect_text(copy, std::string("a\0c", 3));
  _qz_LOG_ustring assigned;
  assigned = original;
  expect_text(assigned, std::string("a\0c", 3));
}

TEST(Ustring, Assignment_EveryPairOfContents) {
  const char* contents[] = {nullptr, "", "short", "a rather longer text than the others"};
  for (const char* from : contents) {
    for (const char* to : contents) {
      const _qz_LOG_ustring source(from);
      _qz_LOG_ustring target(to);
      EXPECT_EQ(&(target = source), &target);
      if (from == nullptr) {
        expect_no_text(target);
      } else {
        expect_text(target, from);
        expect_text(source, from);
      }
    }
  }
}

TEST(Ustring, SelfAssignment_DoesNothing) {
  _qz_LOG_ustring value("text");
  const char* data = value.data;
  const _qz_LOG_ustring& same = value;
  value = same;
  expect_text(value, "text");
  EXPECT_EQ(value.data, data);
  _qz_LOG_ustring empty;
  const _qz_LOG_ustring& same_empty = empty;
  empty = same_empty;
  expect_no_text(empty);
}

TEST(Ustring, SetZero_NoTextAndUsableAgain) {
  _qz_LOG_ustring value("text");
  value.set_zero();
  expect_no_text(value);
  value.set_zero();
  expect_no_text(value);
  value = _qz_LOG_ustring("again");
  expect_text(value, "again");
}

/// Longer than what threads keep memory for.
std::string long_text(char character) { return std::string(64, character); }

TEST(UstringMemory, ConstructionWithoutMemory_Throws) {
  const std::string text = long_text('x');
  EXPECT_EQ(FailEveryAllocation([&] { const _qz_LOG_ustring value(text.c_str()); }), 1U);
  const _qz_LOG_ustring source(text.c_str());
  EXPECT_EQ(FailEveryAllocation([&] { const _qz_LOG_ustring copy(source); }), 1U);
}

TEST(UstringMemory, MoreShortTextsThanAThreadKeepsMemoryFor_Throw) {
  const _qz_LOG_ustring source("text");
  EXPECT_GT(FailEveryAllocation([&] {
              const _qz_LOG_ustring copies[10] = {source, source, source, source, source,
                                                  source, source, source, source, source};
            }),
            1U);
}

TEST(UstringMemory, ShortTextAgain_TakesTheMemoryOfTheOneBefore) {
  if (ThreadBlocks<int>::kMost == 0) GTEST_SKIP() << "every object has memory of its own here";
  // The first makes the thread begin to keep memory, the second leaves its own.
  for (const char* const text : {"text", "other"}) const _qz_LOG_ustring value(text);
  EXPECT_EQ(FailEveryAllocation([] { const _qz_LOG_ustring value("another"); }), 0U);
}

TEST(UstringMemory, NoText_NeedsNone) {
  EXPECT_EQ(FailEveryAllocation([] {
              const _qz_LOG_ustring null(nullptr);
              _qz_LOG_ustring copy(null);
              copy = null;
              copy.set_zero();
            }),
            0U);
}

TEST(UstringMemory, AssignmentWithoutMemory_ThrowsAndKeepsTheText) {
  for (const char* const text : {"from now on", "the thread keeps memory"}) const _qz_LOG_ustring value(text);
  const _qz_LOG_ustring source(long_text('n').c_str());
  _qz_LOG_ustring target("old");
  EXPECT_EQ(FailEveryAllocation([&] { target = source; }, [&] { expect_text(target, "old"); }), 1U);
  expect_text(target, long_text('n'));
  expect_text(source, long_text('n'));
}

}  // namespace
