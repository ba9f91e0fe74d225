#include "tools/choice/choice_options.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace {

using qzlog_tool::add_choice_options;
using qzlog_tool::ChoiceOptions;

/// What was wrong with a command line, or nothing.
std::string parsed(const std::vector<std::string>& words, ChoiceOptions& options) {
  CLI::App app;
  add_choice_options(app, options);
  std::string file;
  app.add_option("FILE", file);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    return "";
  } catch (const CLI::ParseError& error) {
    return error.what();
  }
}

TEST(ChoiceOptions, EachOption_IsRead) {
  ChoiceOptions options;
  EXPECT_EQ(parsed({"--since",  "-2h",    "--until=now", "--id",      "1,2..3", "--id",   "9",
                    "file",     "--name", "A*",          "--level",   "5..",    "--mask", "0x4",
                    "--writer", "h/*",    "--where",     "Free < 10", "--head", "3",      "--unique"},
                   options),
            "");
  EXPECT_EQ(options.since, "-2h");
  EXPECT_EQ(options.until, "now");
  EXPECT_EQ(options.ids, (std::vector<std::string>{"1,2..3", "9"}));
  EXPECT_EQ(options.names, std::vector<std::string>{"A*"});
  EXPECT_EQ(options.level, "5..");
  EXPECT_EQ(options.mask, "0x4");
  EXPECT_EQ(options.writers, std::vector<std::string>{"h/*"});
  EXPECT_EQ(options.where, "Free < 10");
  EXPECT_EQ(options.head, 3u);
  EXPECT_TRUE(options.unique);
  EXPECT_TRUE(options.is_given());
  ChoiceOptions with_tail;
  EXPECT_EQ(parsed({"--tail", "7"}, with_tail), "");
  EXPECT_EQ(with_tail.tail, 7u);
}

struct Case {
  std::vector<std::string> words;
  std::string wrong;
};

TEST(ChoiceOptions, WrongValues_AreRefused) {
  const Case cases[] = {
      {{"--since", "tomorrow"},
       "--since: 'tomorrow' is no time; times are 2026-11-21T08:15:30Z, 2026-11-21, '2026-11-21 08:15', today, "
       "yesterday, "
       "now, -2h (s m h d w), @1795248930"},
      {{"--id", "1-3"},
       "--id: '1-3' is no ID, such as 1001, and no list of IDs and ranges, such as 1001,0x400..0x4FF,9000.."},
      {{"--level", "10"}, "--level: '10' is no level from 0 to 9 and no range of levels, such as 5..9, 5.. or ..3"},
      {{"--mask", "x"}, "--mask: 'x' is no number from 0 to 0xFFFFFFFF"},
      {{"--head", "0"}, "--head: '0' is no number from 1 to 1000000000"},
      {{"--tail", "-1"}, "--tail: '-1' is no number from 1 to 1000000000"},
      {{"--name", ""}, "--name: the name is empty"},
      {{"--where", ""}, "--where: the expression is empty; one is 'Free < 10 and exists(Pool)'"},
      {{"--head", "1", "--tail", "1"}, "--head excludes --tail"},
  };
  for (const Case& tested : cases) {
    ChoiceOptions options;
    EXPECT_EQ(parsed(tested.words, options), tested.wrong);
  }
}

TEST(ChoiceOptions, CommandWithAMaskOfItsOwn_GetsNoOther) {
  CLI::App app;
  ChoiceOptions options;
  add_choice_options(app, options, qzlog_tool::MaskOption::kLeaveOut);
  EXPECT_EQ(app.get_option_no_throw("--mask"), nullptr);
  EXPECT_NE(app.get_option_no_throw("--level"), nullptr);
}

TEST(ChoiceOptions, Footer_HasLinesOfEightyColumns) {
  std::istringstream lines(qzlog_tool::kChoiceFooter);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
}

}  // namespace
