#include "foundation/text_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

constexpr std::size_t kInlineCapacity = 1024;

std::string text_of(const TextBuffer& buffer) { return std::string(buffer.data(), buffer.size()); }

/// `length` different bytes, zero bytes among them.
std::string bytes(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; i < length; ++i) text += static_cast<char>(i * 7 % 256);
  return text;
}

TEST(TextBuffer, CopiedPadded_CutToOneLessAndTheRestZeros) {
  TextBuffer buffer;
  buffer.append("abc");
  for (std::size_t size = 1; size <= 6; ++size) {
    std::string target(8, '~');
    buffer.copy_padded(target.data(), size);
    std::string expected = std::string("abc").substr(0, size - 1);
    expected.resize(size, '\0');
    expected.resize(8, '~');
    EXPECT_EQ(target, expected) << size;
  }
}

TEST(TextBuffer, NothingAppended_Empty) {
  const TextBuffer buffer;
  EXPECT_EQ(buffer.size(), 0U);
  EXPECT_NE(buffer.data(), nullptr);
}

TEST(TextBuffer, EveryFormOfAppending_BytesInOrder) {
  TextBuffer buffer;
  buffer.append("text");
  buffer.append('\0');
  buffer.append("a\0b and not this", 3);
  buffer.append("", 0);
  buffer.append("");
  char* const room = buffer.reserve(10);
  room[0] = 'x';
  room[1] = 'y';
  buffer.count_in(2);
  buffer.reserve(500);
  EXPECT_EQ(text_of(buffer), std::string("text\0a\0bxy", 10));
}

TEST(TextBuffer, AppendedAcrossTheInlineSize_FormerBytesStay) {
  for (std::size_t before = kInlineCapacity - 20; before <= kInlineCapacity + 20; ++before) {
    for (const std::size_t more : {0U, 1U, 15U, 16U, 17U, 2000U, 100000U}) {
      TextBuffer buffer;
      buffer.append(bytes(before).data(), before);
      buffer.append(bytes(more).data(), more);
      ASSERT_EQ(text_of(buffer), bytes(before) + bytes(more)) << before << " + " << more;
    }
  }
}

TEST(TextBuffer, CharacterByCharacter_GrowsAsOften) {
  TextBuffer buffer;
  const std::string wanted = bytes(20000);
  for (const char character : wanted) buffer.append(character);
  EXPECT_EQ(text_of(buffer), wanted);
}

TEST(TextBuffer, Padded_OnlyTheTextCountsAtEveryLength) {
  for (std::size_t length = 0; length <= 40; ++length) {
    for (std::size_t before = 0; before <= 40; ++before) {
      TextBuffer buffer;
      // Behind the text stands exactly what may be read.
      const std::string source = bytes(length) + std::string(TextCursor::kPadding, '!');
      const std::unique_ptr<char[]> exact(new char[source.size()]);
      std::memcpy(exact.get(), source.data(), source.size());
      buffer.append(bytes(before).data(), before);
      TextCursor(buffer).append_padded(exact.get(), length);
      ASSERT_EQ(text_of(buffer), bytes(before) + bytes(length)) << before << " + " << length;
      TextCursor(buffer).append_padded(exact.get(), length);
      buffer.append('.');
      ASSERT_EQ(text_of(buffer), bytes(before) + bytes(length) + bytes(length) + ".") << before << " + " << length;
    }
  }
}

TEST(TextBuffer, PaddedAcrossTheInlineSize_OnlyTheTextCounts) {
  const std::string source = bytes(40) + std::string(TextCursor::kPadding, '!');
  for (std::size_t before = kInlineCapacity - 45; before <= kInlineCapacity + 2; ++before) {
    for (std::size_t length = 0; length <= 40; ++length) {
      TextBuffer buffer;
      buffer.append(bytes(before).data(), before);
      TextCursor(buffer).append_padded(source.data(), length);
      ASSERT_EQ(text_of(buffer), bytes(before) + bytes(length)) << before << " + " << length;
    }
  }
}

TEST(TextBuffer, RoomReserved_FormerBytesStayAndAllOfItCanBeFilled) {
  TextBuffer buffer;
  std::string wanted;
  for (std::size_t count = 0; count < 3000; count += 101) {
    char* const room = buffer.reserve(count);
    ASSERT_EQ(room, buffer.data() + buffer.size());
    std::memset(room, 'r', count);
    buffer.count_in(count);
    wanted.append(count, 'r');
    buffer.append('|');
    wanted += '|';
    ASSERT_EQ(text_of(buffer), wanted);
  }
}

TEST(TextBuffer, RandomAppends_AsAString) {
  SeededRandom random;
  for (int round = 0; round < 50; ++round) {
    TextBuffer buffer;
    std::string wanted;
    while (wanted.size() < 6000) {
      const std::string more = random.text(static_cast<std::size_t>(random.between(0, 200)));
      if (random.one_in(3)) {
        buffer.append(more.c_str());
      } else if (random.one_in(2)) {
        TextCursor(buffer).append_padded((more + std::string(TextCursor::kPadding, '?')).data(), more.size());
      } else {
        buffer.append(more.data(), more.size());
      }
      wanted += more;
    }
    ASSERT_EQ(text_of(buffer), wanted);
  }
}

TEST(TextBuffer, NoMemory_MemoryAllocAndTheTextUnchanged) {
  TextBuffer buffer;
  buffer.append(bytes(1000).data(), 1000);
  const std::string more = bytes(100);
  EXPECT_EQ(FailEveryAllocation([&] { buffer.append(more.data(), more.size()); },
                                [&] { EXPECT_EQ(text_of(buffer), bytes(1000)); }),
            1U);
  EXPECT_EQ(text_of(buffer), bytes(1000) + more);
  EXPECT_EQ(FailEveryAllocation([&] { buffer.reserve(5000); }, [&] { EXPECT_EQ(text_of(buffer), bytes(1000) + more); }),
            1U);
}

TEST(TextCursor, EveryFormOfAppending_BytesInOrder) {
  TextBuffer buffer;
  buffer.append("before ");
  {
    TextCursor cursor(buffer);
    cursor.append("text");
    cursor.append('\0');
    cursor.append("a\0b and not this", 3);
    cursor.append("", 0);
    std::memcpy(cursor.reserve(10), "xy", 2);
    cursor.count_in(2);
    cursor.with_buffer([](TextBuffer& whole) {
      EXPECT_EQ(text_of(whole), std::string("before text\0a\0bxy", 17));
      whole.append("whole");
    });
    cursor.append_padded("end             !", 3);
  }
  EXPECT_EQ(text_of(buffer), std::string("before text\0a\0bxywholeend", 25));
}

TEST(TextCursor, NothingAppended_BufferAsItWas) {
  TextBuffer buffer;
  { const TextCursor cursor(buffer); }
  EXPECT_EQ(buffer.size(), 0U);
  buffer.append("text");
  { const TextCursor cursor(buffer); }
  EXPECT_EQ(text_of(buffer), "text");
}

TEST(TextCursor, AppendedAcrossTheInlineSize_FormerBytesStay) {
  for (std::size_t before = kInlineCapacity - 40; before <= kInlineCapacity + 20; ++before) {
    for (const std::size_t more : {0U, 1U, 15U, 16U, 17U, 33U, 2000U, 100000U}) {
      TextBuffer buffer;
      {
        TextCursor cursor(buffer);
        cursor.append(bytes(before).data(), before);
        cursor.append(bytes(more).data(), more);
        cursor.append('|');
      }
      ASSERT_EQ(text_of(buffer), bytes(before) + bytes(more) + "|") << before << " + " << more;
    }
  }
}

TEST(TextCursor, NoMemoryToGrow_ThrowsAndKeepsTheText) {
  TextBuffer buffer;
  {
    TextCursor cursor(buffer);
    cursor.append(bytes(kInlineCapacity).data(), kInlineCapacity);
    EXPECT_EQ(FailEveryAllocation([&] { cursor.append("more"); }), 1U);
  }
  EXPECT_EQ(text_of(buffer), bytes(kInlineCapacity) + "more");
}

TEST(TextCursor, RandomAppends_AsAString) {
  SeededRandom random;
  for (int round = 0; round < 50; ++round) {
    TextBuffer buffer;
    std::string wanted;
    {
      TextCursor cursor(buffer);
      while (wanted.size() < 6000) {
        const std::string more = random.text(static_cast<std::size_t>(random.between(0, 80)));
        if (random.one_in(4)) {
          cursor.with_buffer([&](TextBuffer& whole) { whole.append(more.data(), more.size()); });
        } else {
          cursor.append(more.data(), more.size());
        }
        wanted += more;
      }
    }
    ASSERT_EQ(text_of(buffer), wanted);
  }
}

}  // namespace
