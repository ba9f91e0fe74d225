#include "definitions/attribute_name.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

void expect_known(const std::string& text) {
  const KnownName* const name = KnownName::of(text.c_str());
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(std::string(name->text()), text);
  EXPECT_EQ(name->hash(), my_hashcode(text.c_str()));
  EXPECT_EQ(KnownName::of(std::string(text).c_str()), name);
  EXPECT_TRUE(name->equals(AttributeName(text.c_str())));
}

/// Texts of more than 15 characters, of which my_hashcode sees about eight: these differ in what it does not see.
std::string unseen_difference(char difference) {
  std::string text(40, 'x');
  text[1] = difference;
  return text;
}

TEST(KnownName, AskedForAgain_SameObject) {
  for (const char* const text : {"user", "User", "a", "Größe", "名前", " ", "with blank"}) expect_known(text);
}

TEST(KnownName, CallersTextChangedAfterwards_NameStays) {
  char text[] = "changing_name";
  const KnownName* const name = KnownName::of(text);
  text[0] = 'X';
  EXPECT_STREQ(name->text(), "changing_name");
  EXPECT_NE(KnownName::of(text), name);
  EXPECT_EQ(KnownName::of("changing_name"), name);
}

TEST(KnownName, OwnTextAsked_SameObject) {
  const KnownName* const name = KnownName::of("own");
  EXPECT_EQ(KnownName::of(name->text()), name);
}

TEST(KnownName, EmptyName_OneObject) { expect_known(""); }

TEST(KnownName, LengthsUpTo300AndVeryLong_OneObjectEach) {
  for (std::size_t length = 0; length <= 300; ++length) expect_known(std::string(length, 'n'));
  expect_known(std::string(1 << 20, 'n'));
  expect_known(std::string((1 << 20) + 1, 'n'));
}

TEST(KnownName, EqualHashes_DifferentObjects) {
  std::set<const KnownName*> names;
  for (char difference = 'a'; difference <= 'z'; ++difference) {
    const std::string text = unseen_difference(difference);
    ASSERT_EQ(my_hashcode(text.c_str()), my_hashcode(unseen_difference('a').c_str()));
    expect_known(text);
    names.insert(KnownName::of(text.c_str()));
  }
  EXPECT_EQ(names.size(), 26U);
  const auto* const first = KnownName::of(unseen_difference('a').c_str());
  EXPECT_FALSE(first->equals(AttributeName(unseen_difference('b').c_str())));
  EXPECT_TRUE(first->equals(AttributeName(unseen_difference('a').c_str())));
}

TEST(KnownName, EqualHashesOfShortNames_DifferentObjects) {
  // 'a' * 37 + 'y' == 'b' * 37 + 'T'
  ASSERT_EQ(my_hashcode("ay"), my_hashcode("bT"));
  EXPECT_NE(KnownName::of("ay"), KnownName::of("bT"));
}

TEST(KnownName, ManyNames_StayWhereTheyAre) {
  std::vector<const KnownName*> names;
  for (int i = 0; i < 20000; ++i) names.push_back(KnownName::of(("many_" + std::to_string(i)).c_str()));
  for (int i = 0; i < 20000; ++i) {
    const std::string text = "many_" + std::to_string(i);
    ASSERT_STREQ(names[static_cast<std::size_t>(i)]->text(), text.c_str());
    ASSERT_EQ(KnownName::of(text.c_str()), names[static_cast<std::size_t>(i)]);
  }
}

TEST(KnownName, JsonKey_EscapedAndWhole) {
  EXPECT_EQ(KnownName::of("user")->json_key(), ",\"user\":");
  EXPECT_EQ(KnownName::of("")->json_key(), ",\"\":");
  EXPECT_EQ(KnownName::of("Gr\u00F6\u00DFe \"\\\n\x01\xFF")->json_key(),
            ",\"Gr\u00F6\u00DFe \\\"\\\\\\n\\u0001\uFFFD\":");
  EXPECT_EQ(KnownName::of(std::string(5000, 'n').c_str())->json_key(), ",\"" + std::string(5000, 'n') + "\":");
}

TEST(KnownName, NoMemory_MemoryAllocAndTheNextTryGivesTheName) {
  // Known ones take no memory. A new one takes its object and its place in the table, which grows now and then.
  expect_known("remembered");
  EXPECT_EQ(FailEveryAllocation([] { KnownName::of("remembered"); }), 0U);
  for (int i = 0; i < 3000; ++i) {
    const std::string text = "short of memory " + std::to_string(i);
    const unsigned allocations = FailEveryAllocation([&] { KnownName::of(text.c_str()); });
    ASSERT_GE(allocations, 2U);
    ASSERT_LE(allocations, 3U);
    expect_known(text);
  }
}

TEST(AttributeName, AnyText_LengthAndHashOfIt) {
  SeededRandom random;
  for (int i = 0; i < 2000; ++i) {
    const std::string text = random.text(static_cast<std::size_t>(random.between(0, 100)));
    const AttributeName name(text.c_str());
    ASSERT_EQ(name.text, text.c_str());
    ASSERT_EQ(name.length, text.size());
    ASSERT_EQ(name.hash, my_hashcode(text.c_str()));
  }
}

}  // namespace
