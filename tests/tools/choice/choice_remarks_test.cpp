#include "tools/choice/choice_remarks.h"

#include <ctime>
#include <string>
#include <vector>

#include "tests/tools/choice/choice_fixture.h"
#include "tools/choice/reader_moment.h"

namespace {

using qzlog_tool::choice_remarks;
using qzlog_tool::EntryChoice;
using qzlog_tool::LineTail;

using ChoiceRemarksTest = qz_test::ChoiceTest;

TEST_F(ChoiceRemarksTest, NothingWasLeftOut_NothingIsSaid) {
  LineTail tail(1);
  EXPECT_EQ(choice_remarks(nullptr, nullptr), std::vector<std::string>());
  EXPECT_EQ(choice_remarks(nullptr, &tail), std::vector<std::string>());
}

TEST_F(ChoiceRemarksTest, WhatWasLeftOut_IsCounted) {
  qzlog_tool::ChoiceOptions options;
  options.since = "2026-11-21";
  EntryChoice choice(options, known_, qzlog_tool::process_clock(std::time(nullptr)));
  LineTail tail(100, 100);
  const std::string text = R"({"id":3,"attributes":{"Reason":1}})"
                           "\n"
                           R"({"id":3,"attributes":{"Reason":2}})"
                           "\n";
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(text.data(), text.size());
  qz_LOG_EntryLine line;
  while (reader.Next(line)) {
    EXPECT_FALSE(choice.takes(line));
    tail.add(line);
  }
  EXPECT_EQ(choice_remarks(&choice, &tail), (std::vector<std::string>{"entries without a time, left out: 2",
                                                                      "lines that --tail had no memory for: 1"}));
}

}  // namespace
