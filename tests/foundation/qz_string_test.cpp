#include "qzlog/qz_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "tests/support/support.h"

namespace {

using qz_test::FailEveryAllocation;
using qz_test::SeededRandom;
using qz_test::thrown;
using qz_test::thrown_by;

// Around the size up to which a text is kept inside the object, and well beyond.
constexpr unsigned kLengths[] = {0, 1, 2, 15, 16, 17, 18, 19, 20, 21, 31, 32, 33, 39, 40, 41, 255, 256, 1000, 70000};

std::string sample(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; i < length; ++i) text += static_cast<char>('a' + i % 26);
  return text;
}

/// All bytes of the string; a test failure when it is not zero-terminated.
std::string bytes(const qz_String& string) {
  EXPECT_NE(string.c_str(), nullptr);
  EXPECT_EQ(string.c_str()[string.length()], '\0');
  return std::string(string.c_str(), string.length());
}

int sign(int value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

TEST(QzString, Default_Empty) {
  const qz_String string;
  EXPECT_EQ(bytes(string), "");
  EXPECT_TRUE(string.empty());
}

TEST(QzString, FromText_CopiesIt) {
  for (const unsigned length : kLengths) {
    std::string text = sample(length);
    const qz_String string(text.c_str());
    text.assign(text.size(), '#');
    EXPECT_EQ(bytes(string), sample(length));
    EXPECT_EQ(string.length(), length);
    EXPECT_EQ(string.empty(), length == 0);
  }
}

TEST(QzString, FromNull_Empty) { EXPECT_EQ(bytes(qz_String(static_cast<const char*>(nullptr))), ""); }

TEST(QzString, CountAndCharacter_ThatManyCopies) {
  for (const unsigned length : kLengths) EXPECT_EQ(bytes(qz_String(length, 'x')), std::string(length, 'x'));
}

TEST(QzString, ThirtySevenZeroBytes_LengthCountsThem) {
  const qz_String string(37, '\0');
  EXPECT_EQ(string.length(), 37U);
  EXPECT_EQ(bytes(string), std::string(37, '\0'));
  EXPECT_EQ(string.compare_string(""), 0);
}

TEST(QzString, Copy_IsIndependent) {
  for (const unsigned length : kLengths) {
    qz_String original(sample(length).c_str());
    const qz_String copy(original);
    original += "changed";
    EXPECT_EQ(bytes(copy), sample(length));
    EXPECT_NE(copy.c_str(), original.c_str());
  }
}

TEST(QzString, Assignment_AllLengthPairs) {
  for (const unsigned from : kLengths) {
    for (const unsigned to : kLengths) {
      const qz_String source(sample(from).c_str());
      qz_String target(std::string(to, '#').c_str());
      EXPECT_EQ(&(target = source), &target);
      EXPECT_EQ(bytes(target), sample(from));
      EXPECT_EQ(bytes(source), sample(from));
    }
  }
}

TEST(QzString, SelfAssignment_KeepsTheText) {
  for (const unsigned length : kLengths) {
    qz_String string(sample(length).c_str());
    const qz_String& same = string;
    string = same;
    EXPECT_EQ(bytes(string), sample(length));
  }
}

TEST(QzString, MoveConstruction_TakesTheText) {
  for (const unsigned length : kLengths) {
    qz_String original(sample(length).c_str());
    const qz_String moved(std::move(original));
    EXPECT_EQ(bytes(moved), sample(length));
    original = qz_String("usable again");
    EXPECT_EQ(bytes(original), "usable again");
  }
}

TEST(QzString, MoveAssignment_AllLengthPairs) {
  for (const unsigned from : kLengths) {
    for (const unsigned to : kLengths) {
      qz_String source(sample(from).c_str());
      qz_String target(std::string(to, '#').c_str());
      target = std::move(source);
      EXPECT_EQ(bytes(target), sample(from));
      source = qz_String("usable again");
      EXPECT_EQ(bytes(source), "usable again");
    }
  }
}

TEST(QzString, CopyOfZeroBytes_KeepsThem) {
  qz_String original;
  original._assign("a\0b", 3);
  const qz_String copy(original);
  qz_String assigned;
  assigned = original;
  EXPECT_EQ(bytes(copy), std::string("a\0b", 3));
  EXPECT_EQ(bytes(assigned), std::string("a\0b", 3));
}

TEST(QzStringAssign, FirstCharacters_ReplaceTheContents) {
  for (const unsigned from : kLengths) {
    for (const unsigned to : kLengths) {
      qz_String string(std::string(to, '#').c_str());
      string._assign((sample(from) + "tail").c_str(), from);
      EXPECT_EQ(bytes(string), sample(from));
    }
  }
}

TEST(QzStringAssign, NullAndZero_Clears) {
  for (const unsigned length : kLengths) {
    qz_String string(sample(length).c_str());
    string._assign(nullptr, 0);
    EXPECT_EQ(bytes(string), "");
    string += "again";
    EXPECT_EQ(bytes(string), "again");
  }
}

TEST(QzStringAssign, PartOfItself_IsKept) {
  for (const unsigned length : kLengths) {
    for (const unsigned start : {0U, 1U, length / 2, length}) {
      if (start > length) continue;
      qz_String string(sample(length).c_str());
      string._assign(string.c_str() + start, length - start);
      EXPECT_EQ(bytes(string), sample(length).substr(start));
    }
  }
}

TEST(QzStringAppend, Text_Appended) {
  for (const unsigned first : kLengths) {
    for (const unsigned second : kLengths) {
      qz_String string(sample(first).c_str());
      EXPECT_EQ(&(string += sample(second).c_str()), &string);
      EXPECT_EQ(bytes(string), sample(first) + sample(second));
    }
  }
}

TEST(QzStringAppend, Characters_OneByOne) {
  qz_String string;
  std::string expected;
  for (int i = 0; i < 3000; ++i) {
    string += static_cast<char>(i % 256);
    expected += static_cast<char>(i % 256);
  }
  EXPECT_EQ(bytes(string), expected);
}

TEST(QzStringAppend, Itself_Doubles) {
  for (const unsigned length : kLengths) {
    qz_String string(sample(length).c_str());
    string += string.c_str();
    EXPECT_EQ(bytes(string), sample(length) + sample(length));
  }
}

TEST(QzStringAppend, CountedBytes_ZeroBytesIncluded) {
  qz_String string("a");
  string.append("b\0c", 3).append("", 0).append("\0", 1);
  EXPECT_EQ(bytes(string), std::string("ab\0c\0", 5));
}

TEST(QzStringPlus, TwoStrings_MakeANewOne) {
  for (const unsigned first : kLengths) {
    const qz_String left(sample(first).c_str());
    const qz_String right("-right");
    EXPECT_EQ(bytes(left + right), sample(first) + "-right");
    EXPECT_EQ(bytes(right + left), "-right" + sample(first));
    EXPECT_EQ(bytes(left), sample(first));
    EXPECT_EQ(bytes(right), "-right");
  }
  const qz_String chained = qz_String("a") + "b" + "c";
  EXPECT_EQ(bytes(chained), "abc");
}

TEST(QzStringCompare, Table_AsStrcmp) {
  const char* texts[] = {"",
                         "a",
                         "b",
                         "ab",
                         "A",
                         "\x7F",
                         "\x80",
                         "\xE9",
                         "\xFF",
                         "a\xFF",
                         "a text that does not fit the object",
                         "a text that does not fit the objects"};
  for (const char* left : texts) {
    for (const char* right : texts) {
      EXPECT_EQ(sign(qz_String(left).compare_string(right)), sign(std::strcmp(left, right))) << left << " : " << right;
    }
  }
}

TEST(QzStringCompare, Null_IsTheEmptyText) {
  EXPECT_EQ(qz_String().compare_string(nullptr), 0);
  EXPECT_GT(qz_String("a").compare_string(nullptr), 0);
}

TEST(QzStringIndex, Positions_GiveTheCharacters) {
  const qz_String string("abc");
  EXPECT_EQ(string[0], 'a');
  EXPECT_EQ(string[2], 'c');
  qz_String zeros;
  zeros._assign("\0\xE9", 2);
  EXPECT_EQ(zeros[0], '\0');
  EXPECT_EQ(zeros[1], '\xE9');
}

TEST(QzStringIndex, NotBelowTheLength_ThrowsIndexOutOfBoundsWithoutText) {
  const qz_String string("abc");
  for (const unsigned index : {3U, 4U, 4294967295U}) {
    EXPECT_EQ(thrown_by([&] { (void)string[index]; }), thrown<QZX_index_out_of_bounds>(nullptr)) << index;
  }
  EXPECT_EQ(thrown_by([] { (void)qz_String()[0]; }), thrown<QZX_index_out_of_bounds>(nullptr));
}

constexpr const char* kLong =
    "a text of more characters than the object itself has room for, whatever that room may be";

TEST(QzStringMemory, ShortTexts_NeedNone) {
  unsigned length = 0;
  {
    const qz_test::AllocationFailure failure(1, qz_test::AllocationFailure::kFromThenOn);
    qz_String string("short");
    string += "er";
    const qz_String copy(string);
    length = copy.length();
  }
  EXPECT_EQ(length, 7U);
}

TEST(QzStringMemory, ConstructionWithoutMemory_Throws) {
  EXPECT_EQ(FailEveryAllocation([] { const qz_String string(kLong); }), 1U);
  EXPECT_EQ(FailEveryAllocation([] { const qz_String string(500, 'x'); }), 1U);
  const qz_String source(kLong);
  EXPECT_EQ(FailEveryAllocation([&] { const qz_String copy(source); }), 1U);
}

template <typename Change>
void expect_unchanged_without_memory(const std::string& before, Change change) {
  qz_String string(before.c_str());
  const auto unchanged = [&] { EXPECT_EQ(bytes(string), before); };
  EXPECT_GE(FailEveryAllocation([&] { change(string); }, unchanged), 1U);
}

TEST(QzStringMemory, ChangeWithoutMemory_LeavesTheStringAsItWas) {
  for (const std::string& before : {std::string(), std::string("short"), std::string("x") + kLong}) {
    const std::string longer = before + kLong + kLong;
    const auto length = static_cast<unsigned>(longer.size());
    const qz_String other(longer.c_str());
    expect_unchanged_without_memory(before, [&](qz_String& string) { string._assign(longer.c_str(), length); });
    expect_unchanged_without_memory(before, [&](qz_String& string) { string += longer.c_str(); });
    expect_unchanged_without_memory(before, [&](qz_String& string) { string.append(longer.c_str(), length); });
    expect_unchanged_without_memory(before, [&](qz_String& string) { string = other; });
  }
}

TEST(QzStringMemory, AppendingCharactersWithoutMemory_LosesNothing) {
  // The thread keeps memory for texts from now on.
  { const qz_String first(30, 'c'); }
  qz_String string;
  std::string expected;
  for (int i = 0; i < 200; ++i) {
    const auto unchanged = [&] { EXPECT_EQ(bytes(string), expected); };
    FailEveryAllocation([&] { string += 'c'; }, unchanged);
    expected += 'c';
    ASSERT_EQ(bytes(string), expected);
  }
}

TEST(QzStringMemory, ConcatenationWithoutMemory_LeavesTheOperandsAsTheyWere) {
  const qz_String left(kLong);
  const qz_String right(kLong);
  const auto unchanged = [&] {
    EXPECT_EQ(bytes(left), kLong);
    EXPECT_EQ(bytes(right), kLong);
  };
  EXPECT_GE(FailEveryAllocation([&] { const qz_String sum = left + right; }, unchanged), 1U);
}

/// One random change of a string and of its plain model.
void change_both(SeededRandom& random, qz_String& string, std::string& model) {
  const std::string text = random.text(static_cast<std::size_t>(random.between(0, 45)));
  switch (random.between(0, 6)) {
    case 0:
      string += text.c_str();
      model += text;
      break;
    case 1:
      string += '\x81';
      model += '\x81';
      break;
    case 2:
      string._assign(text.c_str(), static_cast<unsigned>(text.size()));
      model = text;
      break;
    case 3:
      string = qz_String(text.c_str()) + string;
      model = text + model;
      break;
    case 4: {
      const auto cut = static_cast<unsigned>(random.between(0, string.length()));
      string._assign(string.c_str() + cut, string.length() - cut);
      model = model.substr(cut);
      break;
    }
    case 5: {
      qz_String other(string);
      string._assign(nullptr, 0);
      string = std::move(other);
      break;
    }
    default:
      string.append("z\0z", 3);
      model.append("z\0z", 3);
  }
}

TEST(QzString, RandomChanges_AgreeWithAStandardString) {
  SeededRandom random;
  for (int run = 0; run < 100; ++run) {
    qz_String string;
    std::string model;
    for (int i = 0; i < 50; ++i) {
      change_both(random, string, model);
      ASSERT_EQ(bytes(string), model);
    }
  }
}

}  // namespace
