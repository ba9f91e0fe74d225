#include "tools/choice/line_tail.h"

#include <string>
#include <vector>

#include "tests/tools/choice/choice_fixture.h"

namespace {

using qzlog_tool::LineTail;

class LineTailTest : public qz_test::ChoiceTest {
 protected:
  static std::string numbered(int count) {
    std::string text;
    for (int i = 1; i <= count; ++i) {
      text += R"({"id":3,"attributes":{"Reason":)" + std::to_string(i) + "}}\n";
    }
    return text;
  }
  static void fill(LineTail& tail, const std::string& text) {
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text.data(), text.size());
    qz_LOG_EntryLine line;
    while (reader.Next(line)) tail.add(line);
  }
  /// REASON@LINE of each.
  static std::vector<std::string> shown(LineTail& tail) {
    std::vector<std::string> result;
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(tail, "");
    qz_LOG_EntryLine line;
    while (reader.Next(line)) {
      const LineTail::Place& place = tail.place(line.GetLine());
      result.push_back(std::to_string(line.GetEntry().GetAttrib2("Reason")) + "@" + std::to_string(place.line));
    }
    return result;
  }
};

TEST_F(LineTailTest, MoreLinesThanWanted_TheLastOnesAreThere) {
  LineTail tail(3);
  fill(tail, "\n" + numbered(10));
  EXPECT_EQ(shown(tail), (std::vector<std::string>{"8@9", "9@10", "10@11"}));
  EXPECT_EQ(tail.dropped(), 0u);
}

TEST_F(LineTailTest, FewerLinesThanWanted_AllAreThere) {
  LineTail tail(30);
  fill(tail, numbered(2));
  EXPECT_EQ(shown(tail), (std::vector<std::string>{"1@1", "2@2"}));
}

TEST_F(LineTailTest, MoreMemoryThanAllowed_FewerAreThere) {
  LineTail tail(100, 1000);
  fill(tail, numbered(50));
  const std::vector<std::string> lines = shown(tail);
  ASSERT_GE(lines.size(), 2u);
  EXPECT_LT(lines.size(), 20u);
  EXPECT_EQ(lines.back(), "50@50");
  EXPECT_EQ(tail.dropped(), 50u - lines.size());
}

TEST_F(LineTailTest, OneLineOfMoreMemoryThanAllowed_IsThere) {
  LineTail tail(2, 10);
  fill(tail, numbered(2));
  EXPECT_EQ(shown(tail), std::vector<std::string>{"2@2"});
  EXPECT_EQ(tail.dropped(), 1u);
}

TEST_F(LineTailTest, LinesOfSeveralFiles_KeepTheirNames) {
  const std::string first = folder_.write("a.jsonl", numbered(2));
  const std::string second = folder_.write("b.jsonl", numbered(1));
  LineTail tail(5);
  for (const std::string& path : {first, second, first}) {
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromPath(path.c_str());
    while (reader.Next(line_)) tail.add(line_);
  }
  ASSERT_EQ(tail.size(), 5u);
  EXPECT_EQ(*tail.place(1).file, first);
  EXPECT_EQ(*tail.place(3).file, second);
  EXPECT_EQ(*tail.place(5).file, first);
  EXPECT_EQ(tail.place(5).offset, numbered(1).size());
}

}  // namespace
