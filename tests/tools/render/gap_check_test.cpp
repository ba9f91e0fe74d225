#include "tools/render/gap_check.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"

namespace qzlog_tool {
namespace {

/// One text for each gap: "WRITER FIRST-LAST FILE:LINE".
std::vector<std::string> texts(const GapCheck& check) {
  std::vector<std::string> result;
  for (const GapCheck::Gap& gap : check.gaps()) {
    result.push_back(gap.writer + ' ' + std::to_string(gap.first) + '-' + std::to_string(gap.last) + ' ' + gap.file +
                     ':' + std::to_string(gap.line));
  }
  return result;
}

using Texts = std::vector<std::string>;

TEST(GapCheck, Nothing_IsNoGap) {
  const GapCheck check;
  EXPECT_EQ(texts(check), Texts{});
  EXPECT_EQ(check.summary(), "seq: 0 lines of 0 writers, 0 missing, 0 doubled");
}

TEST(GapCheck, NumbersInOrder_AreNoGap) {
  GapCheck check;
  for (std::uint64_t seq = 1; seq <= 5; ++seq) EXPECT_TRUE(check.add("a", seq, {"f", seq}));
  EXPECT_EQ(texts(check), Texts{});
  EXPECT_EQ(check.summary(), "seq: 5 lines of 1 writer, 0 missing, 0 doubled");
}

TEST(GapCheck, MissingNumbers_AreAGapBeforeTheLineBehindThem) {
  GapCheck check;
  check.add("a", 1, {"f", 10});
  check.add("b", 1, {"f", 11});
  check.add("a", 5, {"g", 2});
  check.add("b", 3, {"h", 7});
  EXPECT_EQ(texts(check), (Texts{"a 2-4 g:2", "b 2-2 h:7"}));
  EXPECT_EQ(check.summary(), "seq: 4 lines of 2 writers, 4 missing, 0 doubled");
}

TEST(GapCheck, LinesThatComeLater_FillTheGap) {
  GapCheck check;
  check.add("a", 1, {"f", 1});
  check.add("a", 6, {"f", 2});
  EXPECT_TRUE(check.add("a", 3, {"f", 3}));
  EXPECT_EQ(texts(check), (Texts{"a 4-5 f:2", "a 2-2 f:3"}));
  EXPECT_TRUE(check.add("a", 4, {"f", 4}));
  EXPECT_TRUE(check.add("a", 5, {"f", 5}));
  EXPECT_EQ(texts(check), (Texts{"a 2-2 f:3"}));
  EXPECT_TRUE(check.add("a", 2, {"f", 6}));
  EXPECT_EQ(texts(check), Texts{});
}

TEST(GapCheck, NumberThatWasThere_IsDoubled) {
  GapCheck check;
  check.add("a", 1, {"f", 1});
  check.add("a", 4, {"f", 2});
  EXPECT_FALSE(check.add("a", 4, {"f", 3}));
  EXPECT_FALSE(check.add("a", 1, {"f", 4}));
  EXPECT_TRUE(check.add("a", 2, {"f", 5}));
  EXPECT_FALSE(check.add("a", 2, {"f", 6}));
  EXPECT_TRUE(check.add("b", 4, {"f", 7}));
  EXPECT_EQ(check.summary(),
            "seq: 7 lines of 2 writers, 1 missing, 3 doubled; 1 writer whose first lines are in no file");
}

TEST(GapCheck, WriterThatBeginsAboveOne_HasNoGapThere) {
  GapCheck check;
  check.add("a", 7, {"f", 1});
  check.add("a", 8, {"f", 2});
  EXPECT_EQ(texts(check), Texts{});
  EXPECT_EQ(check.summary(),
            "seq: 2 lines of 1 writer, 0 missing, 0 doubled; 1 writer whose first lines are in no file");
  check.add("a", 3, {"f", 3});  // a later open wrote it
  EXPECT_EQ(texts(check), (Texts{"a 4-6 f:1"}));
}

TEST(GapCheck, LargestNumbers_AreNumbersLikeOthers) {
  constexpr std::uint64_t kLast = std::numeric_limits<std::uint64_t>::max();
  GapCheck check;
  for (const char* const writer : {"a", "b"}) {
    check.add(writer, 0, {"f", 1});
    EXPECT_TRUE(check.add(writer, kLast, {"f", 2}));
    EXPECT_FALSE(check.add(writer, kLast, {"f", 3}));
    EXPECT_TRUE(check.add(writer, kLast - 1, {"f", 4}));
  }
  EXPECT_EQ(texts(check).front(), "a 1-18446744073709551613 f:4");
  EXPECT_EQ(check.summary(), "seq: 8 lines of 2 writers, 18446744073709551615 missing, 2 doubled");
}

TEST(GapCheck, LinesWithoutNumbers_AreCounted) {
  GapCheck check;
  check.add_unnumbered();
  EXPECT_EQ(check.summary(), "seq: 0 lines of 0 writers, 0 missing, 0 doubled; 1 line without writer and seq");
  check.add_unnumbered();
  EXPECT_EQ(check.summary(), "seq: 0 lines of 0 writers, 0 missing, 0 doubled; 2 lines without writer and seq");
}

/// The plain way: all numbers of all writers.
class Model {
 public:
  bool add(const std::string& writer, std::uint64_t seq) { return seen_[writer].insert(seq).second; }

  std::multiset<std::string> gaps() const {
    std::multiset<std::string> result;
    for (const auto& [writer, numbers] : seen_) {
      std::uint64_t expected = *numbers.begin();
      for (const std::uint64_t number : numbers) {
        if (number > expected) {
          result.insert(writer + ' ' + std::to_string(expected) + '-' + std::to_string(number - 1) +
                        " seq:" + std::to_string(number));
        }
        expected = number + 1;
      }
    }
    return result;
  }

 private:
  std::map<std::string, std::set<std::uint64_t>> seen_;
};

TEST(GapCheck, RandomLines_AreSeenAsByAPlainModel) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 300; ++round) {
    GapCheck check;
    Model model;
    const long long span = random.between(1, 60);
    for (long long count = random.between(1, 120); count > 0; --count) {
      const std::string writer = random.one_in(3) ? "a" : "b";
      const auto seq = static_cast<std::uint64_t>(random.between(0, span));
      // A line's number stands for its place here.
      ASSERT_EQ(check.add(writer, seq, {"seq", seq}), model.add(writer, seq));
    }
    const Texts gaps = texts(check);
    ASSERT_EQ(std::multiset<std::string>(gaps.begin(), gaps.end()), model.gaps());
  }
}

}  // namespace
}  // namespace qzlog_tool
