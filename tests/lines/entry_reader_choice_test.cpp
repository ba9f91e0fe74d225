#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/lines/lines_fixture.h"

namespace {

using qz_test::ErrorNotes;

/// Notes the lines that it is asked about.
class NotingChoice : public qz_LOG_LineChoice {
 public:
  explicit NotingChoice(std::function<bool(std::string_view)> takes) : takes_(std::move(takes)) {}

  bool TakesLine(const char* line, std::size_t length) override {
    asked.emplace_back(line, length);
    return takes_(asked.back());
  }

  std::vector<std::string> asked;

 private:
  std::function<bool(std::string_view)> takes_;
};

class EntryReaderChoiceTest : public qz_test::LinesTest {
 protected:
  qz_LOG_EntryReader reader_of(const std::string& text) {
    return qz_LOG_EntryReader::FromMemory(text.data(), text.size(), &errors_);
  }

  ErrorNotes errors_;
};

TEST_F(EntryReaderChoiceTest, RefusedLines_AreNeitherReadNorReportedButCounted) {
  const std::string text = "{\"id\":8}\nno entry\n\n \r\n{\"id\":7}\r\n{\"id\":8,\"level\":1}\n{\"id\":8";
  NotingChoice choice([](std::string_view line) { return line.find("\"id\":8") != std::string_view::npos; });
  qz_LOG_EntryReader reader = reader_of(text);
  reader.SetLineChoice(&choice);
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_EQ(line_.GetLine(), 1u);
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_EQ(line_.GetLine(), 6u);
  EXPECT_EQ(line_.GetOffset(), text.find("{\"id\":8,"));
  EXPECT_EQ(line_.GetEntry().GetLogLevel(), 1u);
  EXPECT_FALSE(reader.Next(line_));
  EXPECT_EQ(reader.GetRefusedCount(), 2u);
  EXPECT_EQ(reader.GetErrorCount(), 1u);
  EXPECT_EQ(errors_.notes,
            std::vector<std::string>{"7:8: torn-line: the last line breaks off: it is not written whole"});
  EXPECT_EQ(choice.asked,
            (std::vector<std::string>{"{\"id\":8}", "no entry", "{\"id\":7}\r", "{\"id\":8,\"level\":1}"}));
}

TEST_F(EntryReaderChoiceTest, LastLineWithoutItsEnd_IsAskedAboutApart) {
  class LastLines : public qz_LOG_LineChoice {
   public:
    bool TakesLine(const char* /*line*/, std::size_t /*length*/) override { return true; }
    bool TakesLastLine(const char* line, std::size_t length) override {
      last.assign(line, length);
      return takes;
    }
    std::string last;
    bool takes = false;
  } choice;
  for (const bool takes : {false, true}) {
    choice.takes = takes;
    const std::string text = "{\"id\":8}\n{\"id\":7}";
    qz_LOG_EntryReader reader = reader_of(text);
    reader.SetLineChoice(&choice);
    ASSERT_TRUE(reader.Next(line_));
    EXPECT_EQ(choice.last, "");
    EXPECT_EQ(reader.Next(line_), takes);
    EXPECT_EQ(reader.GetRefusedCount(), takes ? 0u : 1u);
    EXPECT_EQ(std::exchange(choice.last, ""), "{\"id\":7}");
  }
}

TEST_F(EntryReaderChoiceTest, TakenLineThatIsWrong_IsReported) {
  const std::string text = "no entry\n";
  NotingChoice choice([](std::string_view) { return true; });
  qz_LOG_EntryReader reader = reader_of(text);
  reader.SetLineChoice(&choice);
  EXPECT_FALSE(reader.Next(line_));
  EXPECT_EQ(reader.GetErrorCount(), 1u);
  EXPECT_EQ(reader.GetRefusedCount(), 0u);
}

TEST_F(EntryReaderChoiceTest, LineThatIsTooLong_IsNotAskedAbout) {
  const std::string text = std::string((16U << 20) + 1, ' ') + "\n{\"id\":8}\n";
  NotingChoice choice([](std::string_view) { return false; });
  qz_LOG_EntryReader reader = reader_of(text);
  reader.SetLineChoice(&choice);
  EXPECT_FALSE(reader.Next(line_));
  EXPECT_EQ(choice.asked, std::vector<std::string>{"{\"id\":8}"});
  EXPECT_EQ(errors_.notes, std::vector<std::string>{"1:0: long-line: the line is longer than 16 MiB"});
}

TEST_F(EntryReaderChoiceTest, SetBetweenLines_CountsFromTheNextOn) {
  const std::string text = "{\"id\":8}\n{\"id\":8}\n{\"id\":8}\n{\"id\":8}\n";
  NotingChoice choice([](std::string_view) { return false; });
  qz_LOG_EntryReader reader = reader_of(text);
  ASSERT_TRUE(reader.Next(line_));
  reader.SetLineChoice(&choice);
  EXPECT_FALSE(reader.Next(line_));
  EXPECT_EQ(reader.GetRefusedCount(), 3u);
  qz_LOG_EntryReader other = reader_of(text);
  other.SetLineChoice(&choice);
  other.SetLineChoice(nullptr);
  EXPECT_TRUE(other.Next(line_));
  EXPECT_EQ(other.GetRefusedCount(), 0u);
}

TEST_F(EntryReaderChoiceTest, WhatItThrows_ReachesTheCallerAndReadingGoesOn) {
  const std::string text = "{\"id\":8}\n{\"id\":8,\"level\":2}\n";
  bool throws = true;
  NotingChoice choice([&throws](std::string_view) {
    if (std::exchange(throws, false)) throw std::runtime_error("no choice");
    return true;
  });
  qz_LOG_EntryReader reader = reader_of(text);
  reader.SetLineChoice(&choice);
  EXPECT_THROW(reader.Next(line_), std::runtime_error);
  ASSERT_TRUE(reader.Next(line_));
  EXPECT_EQ(line_.GetEntry().GetLogLevel(), 2u);
  EXPECT_EQ(line_.GetLine(), 2u);
}

}  // namespace
