#include "message/icu_memory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "message/integer_style.h"
#include "tests/message/message_fixture.h"
#include "tests/message/message_oracle.h"
#include "tests/support/blocked_heap.h"
#include "tests/support/thrown_by.h"

namespace qz_test {
namespace {

using namespace qzlog;

TEST(IcuMemory, ErrnoSaysNoMemory_RanOutUntilTheEnd) {
  errno = EINTR;
  {
    const IcuMemory memory;
    EXPECT_FALSE(memory.ran_out());
    errno = ENOMEM;
    EXPECT_TRUE(memory.ran_out());
    EXPECT_THROW(memory.check(), QZX_memory_alloc);
  }
  EXPECT_EQ(errno, EINTR);
  EXPECT_FALSE(IcuMemory().ran_out());
}

/// Whether a body in which errno alone says that there was no memory is called again.
bool is_called_again() {
  int calls = 0;
  EXPECT_EQ(thrown_by([&] {
              with_icu_memory([&] {
                const IcuMemory memory;
                ++calls;
                errno = ENOMEM;
                memory.check();
              });
            }),
            kNoMemory);
  return calls > 1;
}

// ICU keeps what it made without memory, and would give it out the next time.
TEST(WithIcuMemory, ErrnoAloneWithRoomBehindTheHeap_NotCalledAgain) {
#ifdef QZLOG_EMULATED
  GTEST_SKIP() << "the emulator has no room behind the heap";
#endif
  EXPECT_FALSE(is_called_again());
}

TEST(WithIcuMemory, ErrnoAloneWithoutRoomBehindTheHeap_CalledAgain) {
  const BlockedHeap blocked;
  EXPECT_TRUE(is_called_again());
}

TEST(WithIcuMemory, IcuItselfSaysSo_NotCalledAgain) {
  const BlockedHeap blocked;
  int calls = 0;
  EXPECT_EQ(thrown_by([&] {
              with_icu_memory([&] {
                ++calls;
                IcuMemory().check(U_MEMORY_ALLOCATION_ERROR);
              });
            }),
            kNoMemory);
  EXPECT_EQ(calls, 1);
}

TEST(WithIcuMemory, MemoryAtHand_CalledOnce) {
  int calls = 0;
  EXPECT_EQ(with_icu_memory([&] { return ++calls; }), 1);
}

TEST(WithIcuMemory, MemoryAtALaterCall_ItsResult) {
  for (const int good : {2, 3, kIcuMemoryTries}) {
    int calls = 0;
    EXPECT_EQ(with_icu_memory([&] {
                if (++calls < good) throw IcuMayHaveRunOut();
                return calls;
              }),
              good);
  }
}

TEST(WithIcuMemory, NoMemoryAtAll_TheFailureAskedFor) {
  int calls = 0;
  const auto never = [&]() -> int {
    ++calls;
    throw IcuMayHaveRunOut();
  };
  EXPECT_EQ(thrown_by([&] { with_icu_memory(never); }), kNoMemory);
  EXPECT_EQ(calls, kIcuMemoryTries);
  EXPECT_THROW(with_icu_memory<std::bad_alloc>(never), std::bad_alloc);
}

TEST(WithIcuMemory, AnotherFailureAtALaterCall_ThatOne) {
  int calls = 0;
  const auto body = [&] {
    if (++calls == 1) throw IcuMayHaveRunOut();
    throw QZX_logging_misc("the code page is not known", 0);
  };
  EXPECT_THROW(with_icu_memory(body), QZX_logging_misc);
  EXPECT_EQ(calls, 2);
}

TEST(WithIcuMemory, FailureWithoutDoubt_NotCalledAgain) {
  int calls = 0;
  EXPECT_EQ(thrown_by([&] {
              with_icu_memory([&] {
                ++calls;
                throw QZX_memory_alloc();
              });
            }),
            kNoMemory);
  EXPECT_EQ(calls, 1);
}

TEST(HeapThatCannotGrow, MessagesInEveryLocale_AreRendered) {
  MessageRendering rendering;
  rendering.entry().add_attrib_4("TypeSInt4", -1234567);
  rendering.entry().add_attrib_float8("TypeFloat", 9876543.21);
  const std::string text = "%d%TypeSInt4% %C%TypeFloat% {0,spellout}";
  int count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  const BlockedHeap blocked;
  if (!blocked.holds()) GTEST_SKIP() << "something stands behind the heap already";
  for (int i = 0; i < count; ++i) {
    RenderingSettings::set_icu_locale(locales[i].getName());
    ASSERT_EQ(rendering.icu(text), to_utf8(oracle_message(text, rendering.entry(), locales[i])))
        << locales[i].getName();
  }
}

TEST(HeapThatCannotGrow, LongMessages_AreRendered) {
  MessageRendering rendering;
  rendering.entry().add_attrib_4u("TypeUInt4", 42);
  const BlockedHeap blocked;
  if (!blocked.holds()) GTEST_SKIP() << "something stands behind the heap already";
  for (const std::size_t length : {70'000U, 1'000'000U, 8'000'000U}) {
    const std::string filler(length, 'x');
    EXPECT_EQ(rendering.icu(filler + "%d%TypeUInt4%"), filler + "42");
  }
}

TEST(HeapThatCannotGrow, IntegersInRomanNumerals_AreLearnt) {
  const BlockedHeap blocked;
  if (!blocked.holds()) GTEST_SKIP() << "something stands behind the heap already";
  int count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  for (int i = 0; i < count; ++i) {
    icu::Locale locale(locales[i]);
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("numbers", "roman", status);
    EXPECT_NO_THROW(EXPECT_FALSE(IntegerStyle(locale).is_usable())) << locale.getName();
  }
}

}  // namespace
}  // namespace qz_test
